#!/usr/bin/python3 -B
"""Checks that pictures of --svg agree with the waveform, and that their texts have room."""
import os
import re
import shlex
import subprocess
import sys
import xml.etree.ElementTree
from difflib import unified_diff
from itertools import groupby

sys.path.append(sys.path[0] + "/..")
from lib import PINS, failures, read, run_checks, waveform, write

GOLDEN = "tests/golden/svg_bands.txt"
CHARACTER = 6.02  # width in pixels at the font size of the pictures


def gpio(lines):
    return f"[ZEVA_ICE_GPIO]\nSTART\n{lines}END\n"


def loop(count, lines="TDI=1\n"):
    return f"REPT={count}\n{lines}ENDR\n"


def scan(section, bits, expected=""):
    return f"[{section}]\nIR=2,3\nDR=R,{bits},0\n{expected}"


READS = "PRINT=GPIO_IN  # expect NRST=0\n"
# The arguments, and a script for standard input. The golden file contains the lanes and marks of
# each band, the number of equal bands in a row, and the note after the last band.
PICTURES = [
    # Steps are as wide as possible, and all bands are equally wide, even if there are few steps.
    ("-", "[CONTROL]\nCDI=5\n"),
    ("-", gpio("")),
    ("-", gpio(loop(39))),
    ("-", gpio(loop(40))),
    # If a picture shows only the first steps, it says so.
    ("-", gpio(loop(999))),
    ("-", gpio(loop(1000))),
    ("examples/reset.ini -", gpio(loop(1785))),
    ("examples/reset.ini -", gpio(loop(5000))),
    # A scan shows its values in each band if they fit, else its name. Long names are left out.
    ("--ir-length 2 -", scan("A", 2) + scan("A<&>B\x01", 4)),
    ("--ir-length 2 -", scan("A" * 99, 2)),
    *(("--ir-length 2 -", scan("\u00e9" * letters, 2)) for letters in (16, 17)),
    # Lines of the script are joined until their segment has room for their numbers.
    ("-", gpio("\n" * 1000 + loop(5, "TCK=1\nTDI=1\nTCK=0\n") + "\nTDI=0\n" * 6)),
    # Values that were read, and values that were not as expected.
    ("examples/reset_pulse.gpio", ""),
    ("--keep-going -",
     gpio(f"NRST=1\n{READS}TMS=1\nTMS=0\nTMS=1\n" + loop(3, READS + "PRINT=GPIO_IN\n"))),
    ("-", gpio("TCK=1\nPRINT=GPIO_IN\nTCK=0\nPRINT=GPIO_IN\nTCK=1\nPRINT=GPIO_IN\n" + loop(17))),
    ("--keep-going --ir-length 2 -", scan("A", 2, "TDO=1\nMASK=1\nIR_TDO=2\n")),
    # Marks in every band, several files, and scans across many bands.
    ("--keep-going -", gpio(loop(400, f"TDI=1\n{READS}"))),
    ("examples/reset.ini tests/scripts/walk.gpio examples/reset.ini", ""),
    ("tests/scripts/long_scans.ini --register 0x15:8=5a --ir-length 6 --wire 2wire", ""),
]


class Picture:
    """The contents of an SVG file: `bands` with lanes and marks as text, the `levels` of each pin
    and the TAP `states` at each step, and all texts and marks as (y, left, right, text)."""

    def __init__(self, name):
        root = xml.etree.ElementTree.parse(name).getroot()
        self.width = int(root.get("width"))
        self.bands, self.texts, self.states = [], [], []
        self.levels = dict.fromkeys(PINS, "")
        self.step_width = 44  # if the picture has one tick
        self.times = set()  # the numbers on the ruler
        for element in root:
            kind = element.get("class")
            is_text = element.tag.endswith("text")
            if kind in ("read", "unmet"):
                title = element[0].text.split(": ", 1)[1]
                x = self.middle(element)
                self.bands[-1] += f" {kind} {self.step(x)} {title}:"
                self.texts.append((max(self.rows) + 10, x - 3, x + 3, "a mark"))
            elif is_text and element.get("font-style"):
                self.bands.append(element.text)
            elif is_text:
                self.bands[-1] += element.text
            elif kind == "ink" and element.get("pointer-events"):
                labels = {int(text.get("x")): text.text for text in element}
                self.bands[-1] += "|".join(labels.get(self.middle(path), "") for path in self.shapes)
            elif kind == "ink" and element.get("text-anchor"):
                self.ticks = [(int(text.get("x")), int(text.text)) for text in element]
                self.times |= {time for _, time in self.ticks}
                self.bands.append("")
            elif kind == "ink":
                self.rows = {int(text.get("y")) - 11: text.text for text in element}
            elif kind == "shape":
                self.read_shapes(element)
            elif kind == "wave":
                self.read_waves(element)
            self.read_extents(element)
        self.bands = [band.strip() for band in self.bands]

    def step(self, x):
        """Returns the step that contains `x`."""
        left, first = self.ticks[0]
        if len(self.ticks) > 1:
            self.step_width = (self.ticks[1][0] - left) // (self.ticks[1][1] - first)
        return first + (x - left) // self.step_width

    @staticmethod
    def edges(element):
        """Returns the pixels where a segment or a mark begins and ends."""
        numbers = [int(x) for x in re.findall("[MHL]([0-9]+)", element.get("d"))]
        return min(numbers), max(numbers)

    def middle(self, element):
        return int(element.get("cx") or sum(self.edges(element)) // 2)

    def read_shapes(self, group):
        self.shapes = list(group)
        name = self.rows[int(group[0].get("d").split("H")[0].split()[1])] if self.shapes else ""
        self.bands[-1] += f" {name}:" if name else ""
        for path in group if name == "TAP" else []:
            begin, end = map(self.step, self.edges(path))
            self.states += [path[0].text] * (end - begin)

    def read_waves(self, group):
        for path in group:
            x, y, moves = re.fullmatch(r"M(\d+) (\d+)((?:H\d+V\d+)*H\d+)", path.get("d")).groups()
            x, y = int(x), int(y)
            pin = self.rows.get(y) or self.rows[y - 14]
            for to, level in re.findall(r"H(\d+)(?:V(\d+))?", moves):
                self.levels[pin] += "01"[y in self.rows] * (self.step(int(to)) - self.step(x))
                x, y = int(to), int(level or y)

    def read_extents(self, element):
        centred = element.get("text-anchor") == "middle"
        for text in element.iter("{http://www.w3.org/2000/svg}text"):
            width = CHARACTER * sum(1 if ch.isascii() else 2 for ch in text.text)
            left = int(text.get("x")) - (width / 2 if centred else 0)
            self.texts.append((int(text.get("y")), left, left + width, text.text))


def check(arguments, script):
    """Draws a run, compares the picture with its waveform, and returns its bands as lines."""
    subprocess.run(["icehost", "run", "-q", "--svg", "svg", "--vcd", "vcd", *shlex.split(arguments)],
                   input=script.encode(), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                   check=False)
    picture = Picture("svg")
    if (picture.levels, picture.states) != waveform("vcd", len(picture.states)):
        failures.append(f"{arguments} {script}: levels or states differ from the waveform")
    tick = 5 if picture.bands[0].startswith("line:") else 10
    if picture.times != set(range(0, len(picture.states) + 1, tick)):
        failures.append(f"{arguments} {script}: the ruler shows {sorted(picture.times)}")
    texts = sorted(picture.texts)
    for one, other in zip(texts, texts[1:] + [(None,)]):
        if one[1] < 0 or one[2] > picture.width or (one[0] == other[0] and one[2] >= other[1]):
            failures.append(f"{arguments} {script}: no room for {one[3]}")
    bands = [f"{len(list(same))} x {band}" for band, same in groupby(picture.bands)]
    return [f"# {arguments}", *bands]


def check_pictures():
    drawn = [line for picture in PICTURES for line in check(*picture)]
    if "ICESCRIPT_UPDATE_GOLDEN" in os.environ:
        write(GOLDEN, "\n".join(drawn) + "\n")
    failures.extend(unified_diff(read(GOLDEN).splitlines(), drawn, "expected", "drawn", n=0))


run_checks(check_pictures)
