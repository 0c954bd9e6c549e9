#!/usr/bin/python3
"""What `icehost check` says of scripts, against the tables of a manual: each text and each hint has a
row, and each row is shown by some script.

usage: messages.py ICEHOST SOURCE_FOLDER. In a table `<...>` stands for any text, and a hint in
parentheses at the end may be missing.
"""
import glob
import json
import os
import re
import subprocess
import sys

ICEHOST = os.path.abspath(sys.argv[1])
SOURCE = sys.argv[2]
# Beside those of tests/scripts. Three dashes end a script.
SLIPS = r"""# expect TDO=1
[CONTROL]
RESET=
TDO=1
---
[A]
IR=
---
[A]
IR=5,1
DR=,12
TDO=1,0x1ff
MASK=0
IR_TDO=0x3f
[B]
IR=17,0,0,0
DR=R,12
TDO=1,2,3
MASK=0
MASK=1,1
IR_TDO=1,0,0
[C]
IR=5,1
DR=W,0
TDO=1
IR_MASK=3
tdo=1
[D]
IR=5,1
DR=W,8
MASK=0
[E]
IR=5,1
DR=W,8
TDO=1
MASK=0
---
[CONTROL]
CDI=2
[A]
IR=257,1
DR=W,8
START
---
[ORVEX_ICE_GPIO
---
[ORVEX_ICE_GPIO] 5
---
[ORVEX-ICE_GPIO]
---
[ ORVEX_ICE_GPIO ]
"""


def checked(script, text=""):
    ran = subprocess.run([ICEHOST, "check", "--json", "-", script], input=text, encoding="utf-8",
                         stdout=subprocess.PIPE, check=False)
    records = map(json.loads, ran.stdout.splitlines())
    return [(record["problem"], record["text"]) for record in records if "problem" in record]


def row_of(text):
    text, hint = re.subn(r" \(<hint>\)$", "", text)
    pattern = re.sub(r"<[a-z ]+>", ".*?", re.escape(text).replace(r"\ ", " "))
    return re.compile(pattern + r"(?: \((.*)\))?" * hint)


def compare(manual, found):
    with open(manual, encoding="utf-8") as file:
        told = re.search(r"^### Of icehost check\n(.*?)^### ", file.read(), re.M | re.S)[1]
    cells = re.findall(r"^\| `([^`]+)` \| (error \||warning \|)?", told, re.M)
    left = {(kind[:-2], row_of(text)) for text, kind in cells}
    rows = tuple(left)
    while found:
        kind, text = found.pop()
        matches = {row: match for row in rows if row[0] == kind and (match := row[1].fullmatch(text))}
        left -= matches.keys()
        if not matches:
            yield f"no row: {kind or 'hint'}: {text}"
        hints = [match[1] for match in matches.values() if match.re.groups and match[1]]
        found += [("", hint) for hint in hints]
    yield from (f"no script shows: {row.pattern}" for _, row in left)
    if not rows:
        yield "no table"


os.chdir(SOURCE)
texts = [problem for script in glob.glob("tests/scripts/*.ini") for problem in checked(script)]
for script in ("tests/scripts/marked.gpio", "tests/scripts/near.gpio", "/dev/null"):
    texts += checked(script)
for slips in SLIPS.split("---\n"):
    texts += checked("-", slips)
failures = list(compare("docs/jtag-scripts.md", texts))
print("\n".join(failures))
sys.exit(bool(failures))
