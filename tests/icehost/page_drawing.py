"""Compares the drawing calls of a page with those that its data requires.

Both are lists of the visible calls in order: (name, x, y, width, height, colour),
("fillText", x, y, text, align, baseline, colour), (name, x, y, ...) for a part of a path, and
(name, colour) for the path.
"""
import base64
import math
import re
from itertools import groupby

LABELS, RULER, LANE, HIGH = 64, 22, 24, 14  # pixels
NOT_MET = 2
UNKNOWN_TAP = 16

# Draws the page again, and returns the calls.
RECORD = """
const {context} = wave, calls = [];
for (const name of ["save", "beginPath", "rect", "clip", "restore", "fillRect", "fillText", "arc",
  "moveTo", "lineTo", "fill", "stroke"]) {
  context[name] = (...values) => calls.push([name, values,
    name === "stroke" ? context.strokeStyle : context.fillStyle, context.textAlign,
    context.textBaseline]);
}
wave.draw();
for (const name of Object.keys(context)) delete context[name];
return calls"""


def colours_of(styles):
    """Returns the names of the colours of the light scheme."""
    found = re.findall(r"--([a-z-]+): (#\w+);", styles.partition("@media")[0])
    return {value if len(value) == 7 else "#" + "".join(2 * digit for digit in value[1:]): name
            for name, value in found}


def drawn(calls, colours, width):
    """Returns the visible calls among those that RECORD returned."""
    found = []
    for name, values, fill, align, baseline in calls:
        colour = colours.get(fill, fill)
        if name == "fillText":
            text, x, y = values
            found.append((name, x, y, str(text), align, baseline, colour))
        else:
            coloured = name in ("fillRect", "fill", "stroke")
            found.append((name, *values) + ((colour,) if coloured else ()))
    return in_sight(found, width)


def in_sight(calls, width):
    """Returns the calls that are not clipped, with rounded numbers."""
    kept, clipped = [], False
    for name, *values in calls:
        clipped = (clipped or name == "clip") and name != "restore"
        values = [round(float(one), 3) if isinstance(one, (int, float)) else one for one in values]
        if clipped and values and not isinstance(values[0], str):
            right = values[0] + values[2] if name == "fillRect" else values[0] + 1
            if right <= LABELS or values[0] >= width:
                continue
        kept.append((name, *values))
    return kept


class Picture:
    """The calls that the page must make."""

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

    def sees(self, begin, end):
        return end > math.floor(self.start) and begin < self.start + self.room / self.scale + 1

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
        self.scans()
        self.reads()
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
        """Draws marks at least 90 pixels apart. The distance is 1, 2 or 5 times a power of ten."""
        powers = (digit * 10 ** power for power in range(7) for digit in (1, 2, 5))
        apart = next(steps for steps in powers if steps * self.scale >= 90)
        end = min(len(self.steps), math.ceil(self.start + self.room / self.scale) + 1)
        for time in range(0, end + 1, apart):
            x = math.floor(self.x(time) + 0.5)
            self.rect(x, 0, 1, self.height, "grid")
            self.text(x + 4, RULER / 2 - 2, f"{time} us", "left", "dim")

    def blocks(self, y, blocks):
        """Draws the first block of each pixel, with the longest text that fits into the visible
        part of the block. The free space at the end of the block has no text."""
        taken = None
        for begin, end, colour, texts, *free in blocks:
            x = self.x(begin)
            right = x + (self.x(end) - x)  # rounded as in the page
            left = math.floor(x)
            if right <= LABELS or (right - x < 1 and left == taken):
                continue
            taken = left
            self.rect(left, y, max(1, math.floor(right) - left), HIGH + 2, colour)
            self.rect(left, y, 1, HIGH + 2, "edge")
            seen = (max(x, LABELS), min(x + (right - x - sum(free)), self.width))
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
        self.blocks(RULER + 2 * LANE, blocks)

    def scans(self):
        """Draws a box from Capture to Update for each operation with a known value."""
        states = "".join({"Capture": "c", "Shift": "s", "Exit1": "e", "Pause": "e", "Exit2": "e",
                          "Update": "e"}.get(name.partition("-")[0], " ") + name[-2]
                         for name in (self.taps[step >> len(self.pins)] for step in self.steps))
        blocks = []
        for scan in re.finditer(r"(?:c([ID]))*(?:s([ID])|e\2)+", states):
            register, shift = scan[2] + "R", max(scan.start(), scan.end(1))
            row = next((row for row in self.rows if row[2] <= shift // 2 < row[3]), None)
            sent = row and re.search(register + r" (\d+): 0x(\w+)", row[5])
            if not sent:
                continue
            received, expected = (re.search(register + r" 0x(\w+)", text) for text in row[6:8])
            extra = len(sent[2]) - len(received[1]) if received else 0  # an extra byte on two wires
            value = f"0x{sent[2][:len(sent[2]) - extra]}"
            back = f"-> 0x{received[1]}" if received else ""
            wrong = register in row[8]
            unmet = [f"{back}, expected 0x{expected[1]}"] if wrong else []
            said = f"{value} {unmet[0] if wrong else back}".strip()
            texts = [f"{register} {int(sent[1]) - 4 * extra} bits {said}", f"{register} {said}",
                     *unmet, f"{register} {back}", back, f"{register} {int(sent[1]) - 4 * extra} bits",
                     register]
            blocks.append((scan.start() // 2, scan.end() // 2, "bad-soft" if wrong else "block",
                           [text for text in texts if text], 12 if wrong else 0))
        self.blocks(RULER + LANE, blocks)
        self.boxes = [(begin, end) for begin, end, *_ in blocks]
        self.unmet = [(begin, end) for begin, end, *_, free in blocks if free]

    def reads(self):
        """Draws a ring, a dot or a cross at each step that was read, with the longest text that
        fits. Dense reads have ticks and fewer crosses."""
        shown = {}  # for each step, the first row that is not met, or else the last row
        for row in self.rows:
            if row[6].startswith("0x") and 0 < row[3] <= len(self.steps):
                if shown.get(row[3] - 1, [None])[-1] != NOT_MET:
                    shown[row[3] - 1] = row
        places = [(self.x(step + 0.5), step, row) for step, row in shown.items()]
        middle, free, column = RULER + LANE + HIGH / 2 + 1, LABELS, None
        for i, (x, step, row) in enumerate(places):
            if not self.sees(step, step + 1):
                continue
            next_x = places[i + 1][0] if i + 1 < len(places) else math.inf
            if next_x - x < 8 or (i > 0 and x - places[i - 1][0] < 8):
                if math.floor(x) != column:
                    self.rect(math.floor(x), RULER + LANE + 4, 1, HIGH - 6, "dim")
                column = math.floor(x)
                continue
            if row[-1] != NOT_MET:
                self.calls += [("beginPath",), ("arc", x, middle, 3, 0, 2 * math.pi),
                               ("fill", "wave" if row[7] else "bg"), ("stroke", "wave")]
            # No text overlaps a box.
            free = max([free] + [self.x(end) for _, end in self.boxes if end <= step + 1])
            free = self.read_text(row, x, free, min([next_x - 6, self.width] + [
                self.x(begin) for begin, end in self.boxes if end > step + 1]))
        self.crosses(sorted(self.unmet + [(step, step + 1) for _, step, row in places
                                          if row[-1] == NOT_MET]))

    def read_text(self, row, x, free, end):
        """Draws the text of a read, and returns the position at which the next text can begin."""
        value, expected, wrong = row[6][:4], row[7], int(row[8] or "0", 0)
        mask = int(expected.partition("/")[2] or "0x3f", 0)
        texts = [row[6], value] + [str(int(value, 0) >> 5 & 1)] * (mask >> 5 & 1)
        if row[-1] == NOT_MET:
            why = ", ".join(f"{name} is {int(value, 0) >> pin & 1}"
                            for pin, name in enumerate(self.pins) if wrong >> pin & 1)
            texts = ([f"{row[6]}: {why}", why, value] if why else
                     [f"{row[6]}, expected {expected}", value])
        for text in texts:
            width = len(text) * self.character
            left = x + 6 if x + 6 + width <= end else x - 6 - width
            if left >= free:
                self.text(left, RULER + LANE + HIGH / 2 + 1, text, "left",
                          "bad" if row[-1] == NOT_MET else "fg")
                return max(x, left + width) + 6
        return x + 6

    def crosses(self, places):
        y, before = RULER + LANE + HIGH / 2 + 1, -math.inf
        for begin, end in places:
            x = max(self.x((begin + end) / 2), self.x(end) - 7)
            if self.sees(begin, end) and x - before >= 3:
                before = x
                self.calls += [("beginPath",), ("moveTo", x - 3, y - 3), ("lineTo", x + 3, y + 3),
                               ("moveTo", x - 3, y + 3), ("lineTo", x + 3, y - 3), ("stroke", "bad")]

    def levels(self, pin):
        """Draws, in each column of pixels, the levels of its steps and of the previous step."""
        levels, columns, before = [step >> pin & 1 for step in self.steps], [], set()
        for column in range(min(self.room, math.ceil(self.x(len(levels))) - LABELS)):
            first = math.floor(self.start + column / self.scale)
            end = max(first + 1, math.floor(self.start + (column + 1) / self.scale))
            columns.append(frozenset(levels[first:end]) | before)
            before = {levels[min(end, len(levels)) - 1]}
        x, y = LABELS, RULER + (3 + pin) * LANE
        for shown, same in groupby(columns):
            width = len(list(same))
            self.rect(x, y if 1 in shown else y + HIGH, width, 1.5 if len(shown) == 1 else HIGH + 1,
                      "wave")
            x += width

    def labels(self):
        self.rect(0, 0, LABELS, self.height, "bg")
        self.rect(LABELS - 1, 0, 1, self.height, "edge")
        at, colour = (self.cursor, "cursor") if self.hover is None else (self.hover, "dim")
        for lane, name in enumerate(["op", "data", "TAP", *self.pins]):
            y = RULER + lane * LANE + HIGH / 2 + 1
            self.text(8, y, name, "left", "fg")
            if lane >= 3 and at is not None:
                self.text(LABELS - 8, y, str(self.steps[at] >> (lane - 3) & 1), "right", colour)
