"""What a page draws on its canvas, and what it has to draw of the data in it.

Both are lists of calls in their order, without those that change nothing that is in sight:
(name, x, y, width, height, colour) and ("fillText", x, y, text, align, baseline, colour).
"""
import base64
import math
import re
from itertools import groupby

LABELS, RULER, LANE, HIGH = 64, 22, 24, 14  # pixels
NOT_MET = 2
UNKNOWN_TAP = 16

# Draws once more, and returns the calls.
RECORD = """
const {context} = wave, calls = [];
for (const name of ["save", "beginPath", "rect", "clip", "restore", "fillRect", "fillText"]) {
  context[name] = (...values) => calls.push([name, values, context.fillStyle, context.textAlign,
    context.textBaseline]);
}
wave.draw();
for (const name of Object.keys(context)) delete context[name];
return calls"""


def colours_of(styles):
    """The names of the light colours."""
    found = re.findall(r"--([a-z-]+): (#\w+);", styles.partition("@media")[0])
    return {value if len(value) == 7 else "#" + "".join(2 * digit for digit in value[1:]): name
            for name, value in found}


def drawn(calls, colours, width):
    """The calls that RECORD returned."""
    found = []
    for name, values, fill, align, baseline in calls:
        colour = colours.get(fill, fill)
        if name == "fillText":
            text, x, y = values
            found.append((name, x, y, str(text), align, baseline, colour))
        else:
            found.append((name, *values) + ((colour,) if name == "fillRect" else ()))
    return in_sight(found, width)


def in_sight(calls, width):
    """Rounded, and without what is clipped."""
    kept, clipped = [], False
    for name, *values in calls:
        clipped = (clipped or name == "clip") and name != "restore"
        values = [round(float(one), 3) if isinstance(one, (int, float)) else one for one in values]
        if clipped and values:
            right = values[0] + values[2] if name == "fillRect" else values[0] + 1
            if right <= LABELS or values[0] >= width:
                continue
        kept.append((name, *values))
    return kept


class Picture:
    """What has to be drawn."""

    def __init__(self, data, view):
        raw = base64.b64decode(data["steps"])
        self.steps = [low | high << 8 for low, high in zip(raw[::2], raw[1::2])]
        self.pins, self.taps = data["pins"], data["taps"] + ["TAP unknown"]
        self.rows = [entry for entry in data["log"] if isinstance(entry, list)]
        for name, value in view.items():  # from, scale, cursor, hover, row, width, height, character
            setattr(self, "start" if name == "from" else name, value)
        self.room = self.width - LABELS
        self.calls = []

    def x(self, step):
        return LABELS + (step - self.start) * self.scale

    def rect(self, x, y, width, height, colour):
        self.calls.append(("fillRect", x, y, width, height, colour))

    def text(self, x, y, text, align, colour):
        self.calls.append(("fillText", x, y, text, align, "middle", colour))

    def wanted(self):
        self.rect(0, 0, self.width, self.height, "bg")
        self.calls += [("save",), ("beginPath",), ("rect", LABELS, 0, self.room, self.height),
                       ("clip",)]
        if self.row is not None:
            _, _, begin, end, *_ = self.rows[self.row]
            left = math.floor(self.x(begin))
            self.rect(left, RULER - 4, max(2, math.ceil(self.x(end)) - left), self.height, "pick")
        self.ruler()
        self.operations()
        self.states()
        for pin in range(len(self.pins)):
            self.levels(pin)
        for step, colour in ((self.hover, "dim"), (self.cursor, "cursor")):
            if step is not None:
                self.rect(math.floor(self.x(step + 0.5) + 0.5), 0, 1, self.height, colour)
        self.calls.append(("restore",))
        self.labels()
        share = self.room / len(self.steps)
        self.rect(LABELS + self.start * share, self.height - 3,
                  max(4, self.room / self.scale * share), 3, "edge")
        return in_sight(self.calls, self.width)

    def ruler(self):
        """A mark every 1, 2 or 5 times a power of ten, the nearest that are 90 pixels apart."""
        powers = (digit * 10 ** power for power in range(7) for digit in (1, 2, 5))
        apart = next(steps for steps in powers if steps * self.scale >= 90)
        end = min(len(self.steps), math.ceil(self.start + self.room / self.scale) + 1)
        for time in range(0, end + 1, apart):
            x = math.floor(self.x(time) + 0.5)
            self.rect(x, 0, 1, self.height, "grid")
            self.text(x + 4, RULER / 2 - 2, f"{time} us", "left", "dim")

    def blocks(self, y, blocks):
        """Of those in one pixel the first; each with the longest text that has room in sight."""
        taken = None
        for begin, end, colour, texts in blocks:
            x = self.x(begin)
            right = x + (self.x(end) - x)  # rounded as the page rounds it
            left = math.floor(x)
            if right <= LABELS or (right - x < 1 and left == taken):
                continue
            taken = left
            self.rect(left, y, max(1, math.floor(right) - left), HIGH + 2, colour)
            self.rect(left, y, 1, HIGH + 2, "edge")
            seen = (max(x, LABELS), min(right, self.width))
            fitting = [text for text in texts
                       if len(text) * self.character + 6 <= seen[1] - seen[0]]
            if fitting and right - x > self.character + 4:
                self.text(sum(seen) / 2, y + HIGH / 2 + 1, fitting[0], "center", "fg")

    def operations(self):
        blocks = []
        for index, (_, line, begin, end, name, *_, verdict) in enumerate(self.rows):
            colour = ("bad-soft" if verdict >= NOT_MET else
                      "pick" if index == self.row else "block")
            texts = [f"{line} {name}", f"{line}"] if line else [name]
            if end > begin and begin < len(self.steps):
                blocks.append((begin, end, colour, texts))
        self.blocks(RULER, blocks)
        for _, _, begin, end, *_, verdict in self.rows:
            if verdict >= NOT_MET and begin <= len(self.steps):
                x = self.x(begin)
                self.rect(x, RULER + HIGH + 2, max(2, self.x(end) - x), 2, "bad")

    def states(self):
        blocks, begin = [], 0
        for tap, steps in groupby(step >> len(self.pins) for step in self.steps):
            end, name = begin + len(list(steps)), self.taps[tap]
            colour = "shift" if name.startswith("Shift-") else "block"
            blocks.append((begin, end, colour, [name, name.split("-")[0]]))
            begin = end
        self.blocks(RULER + LANE, blocks)

    def levels(self, pin):
        """A column of pixels shows the levels of its steps, and of the step before."""
        levels, columns, before = [step >> pin & 1 for step in self.steps], [], set()
        for column in range(min(self.room, math.ceil(self.x(len(levels))) - LABELS)):
            first = math.floor(self.start + column / self.scale)
            end = max(first + 1, math.floor(self.start + (column + 1) / self.scale))
            columns.append(frozenset(levels[first:end]) | before)
            before = {levels[min(end, len(levels)) - 1]}
        x, y = LABELS, RULER + (2 + pin) * LANE
        for shown, same in groupby(columns):
            width = len(list(same))
            self.rect(x, y if 1 in shown else y + HIGH, width, 1.5 if len(shown) == 1 else HIGH + 1,
                      "wave")
            x += width

    def labels(self):
        self.rect(0, 0, LABELS, self.height, "bg")
        self.rect(LABELS - 1, 0, 1, self.height, "edge")
        at, colour = (self.cursor, "cursor") if self.hover is None else (self.hover, "dim")
        for lane, name in enumerate(["op", "TAP", *self.pins]):
            y = RULER + lane * LANE + HIGH / 2 + 1
            self.text(8, y, name, "left", "fg")
            if lane >= 2 and at is not None:
                self.text(LABELS - 8, y, str(self.steps[at] >> (lane - 2) & 1), "right", colour)
