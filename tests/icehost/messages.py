#!/usr/bin/python3 -B
"""Compares the messages of `icehost check` with the tables in a document. Each message and each
hint must have a row, and each row a test script that causes the message. In a table `<...>` means
any text, and a hint in parentheses at the end is optional.
"""
import glob
import re
import sys

sys.path.append(sys.path[0] + "/..")
from lib import ICEHOST, failures, output, read, records_of, run_checks


def checked(script):
    records = records_of(output(ICEHOST, "check", "-q", "--json", "-", script))
    return [(record["problem"], record["text"]) for record in records if "problem" in record]


def row_of(text):
    text, hint = re.subn(r" \(<hint>\)$", "", text)
    pattern = re.sub(r"<[a-z ]+>", ".*?", re.escape(text).replace(r"\ ", " "))
    return re.compile(pattern + r"(?: \((.*)\))?" * hint)


def compare(manual, found):
    told = re.search(r"^### Messages of icehost check\n(.*?)^### ", read(manual), re.M | re.S)[1]
    cells = re.findall(r"^\| `([^`]+)` \| (error \||warning \|)?", told, re.M)
    left = {(kind[:-2], row_of(text)) for text, kind in cells}
    rows = tuple(left)
    while found:
        kind, text = found.pop()
        matches = {row: match for row in rows if row[0] == kind and (match := row[1].fullmatch(text))}
        left -= matches.keys()
        if not matches:
            failures.append(f"{manual} has no row for: {kind or 'hint'}: {text}")
        hints = [match[1] for match in matches.values() if match.re.groups and match[1]]
        found += [("", hint) for hint in hints]
    failures.extend(f"no script causes: {row.pattern}" for _, row in left)
    if not rows:
        failures.append(f"{manual} has no table of messages")


def check_jtag_scripts():
    scripts = glob.glob("tests/scripts/*.ini")
    scripts += ["tests/scripts/marked.gpio", "tests/scripts/near.gpio", "/dev/null"]
    compare("docs/jtag-scripts.md", [problem for script in scripts for problem in checked(script)])


run_checks(check_jtag_scripts)
