#!/usr/bin/python3 -B
"""Compares the JSON lines of icehost with their schema and with the manual."""
import glob
import json
import re
import subprocess
import sys

import jsonschema

sys.path.append(sys.path[0] + "/..")
from lib import (BACK, ICEHOST, RESET, TO_SHIFT_DR, Serve, expect, failures, read, records_of,
                 run_checks)

SCHEMA = json.loads(read("docs/icehost.schema.json"))
jsonschema.Draft202012Validator.check_schema(SCHEMA)
KINDS = {
    kind["$ref"]: jsonschema.Draft202012Validator({**kind, "$defs": SCHEMA["$defs"]})
    for kind in SCHEMA["oneOf"]
}
seen = {}  # the kinds that match each line


def kinds_of(value):
    return [name for name, kind in KINDS.items() if kind.is_valid(value)]


def check_lines(what, lines):
    """A line matches exactly one kind. With an extra key or without the first, it matches none."""
    for line in lines:
        if line in seen:
            continue
        if not re.fullmatch(r"[ -~]+", line):
            failures.append(f"{what}: not plain ASCII: {line!r}")
        value = json.loads(line)
        kinds = kinds_of(value)
        seen[line] = kinds
        if len(kinds) != 1:
            failures.append(f"{what}: {kinds}: {line}")
        if kinds_of({**value, "unknown": 1}) or kinds_of(dict(list(value.items())[1:])):
            failures.append(f"{what}: the schema accepts anything for {line}")


def run(*arguments, script=""):
    done = subprocess.run([ICEHOST, *arguments, "--json", "-"], input=script.encode(),
                          capture_output=True, check=False)
    text = done.stdout.decode("ascii")
    check_lines(" ".join(arguments), text.splitlines())
    values = records_of(text)
    if arguments[0] == "run":
        plain = subprocess.run([ICEHOST, *arguments], input=script.encode(), capture_output=True,
                               check=False)
        expect(f"messages of {arguments}", "".join(value.get("message", "") for value in values),
               plain.stdout.decode(errors="replace"))
    last = values[-1]
    if last.get("status", done.returncode) != done.returncode or (
            "errors" in last and (last["errors"] == 0) != (done.returncode == 0)):
        failures.append(f"{arguments}: status {done.returncode}, at the end {last}")
    return values


def check_serving():
    server = Serve("--json", "served")
    server.play(RESET + b"0404" + TO_SHIFT_DR + b"04" * (1 << 20) + BACK + b"04RQ")
    server.play(b"2604" + BACK + b"trRQ")
    server.end()
    check_lines("serve", read("served").splitlines())
    values = records_of(read("served"))
    expect("serve", " ".join(next(iter(value)) for value in values),
           "schema client reset idle scan idle client client scan pins reset pins client end")
    expect("the scan", values[4].get("bits"), (1 << 20) + 1)


def check_runs():
    for verb in (("run", "--force"), ("check",)):
        for path in glob.glob("examples/*.[gi]*") + glob.glob("tests/scripts/*"):
            if "endless" not in path and not path.endswith(".bin"):
                run(*verb, path)
        run(*verb, "-", script=read("tests/scripts/slips.ini"))
        if "\ufffd" not in str(run(*verb, "tests/scripts/quoted.ini")):
            failures.append(f"{verb}: invalid UTF-8 is not replaced")
    run("run", "--wire", "cjtag2", "examples/read_idcode.ini")
    run("run", "--chain", "4,5", "--tap", "2", "examples/read_idcode.ini")
    run("run", "--keep-going", "--idcode", "3", "examples/read_idcode.ini")
    run("run", "--force", "/dev/null")
    run("run", "--learn", "/dev/full", "examples/read_idcode.ini")
    run("run", "--repeat", "2", "--idcode", "3", "examples/read_idcode.ini", "examples/reset.ini")
    run("run", "-", script="[A]\nIR=5,1\nDR=R,8\nTDO=0\n[B]\nIR=5,1\nDR=R,8\nTDO=0x01\n")


def check_times():
    """The times of calls never decrease. Calls have a duration only over a network."""
    server = Serve()
    for probe in ("sim", f"remote-bitbang:127.0.0.1:{server.port}"):
        calls = [value for value in run("run", "--probe", probe, "--repeat", "2", "--keep-going", "-",
                                        script="[A]\nIR=5,1\nDR=R,8\nTDO=0\n[B]\nIR=5,1\nDR=R,8\n")
                 if "call" in value]
        times = [call["at_us"] for call in calls]
        expect(f"times on {probe}", (len(times), times), (12, sorted(times)))
        took = [call.get("took_us", 0) for call in calls if call["call"] == "link_jtag_execute"]
        expect(f"durations on {probe}", [time > 0 for time in took], [probe != "sim"] * 4)
    server.end()


def check_manual():
    """Checks the lines of check and serve. The lines of a run have no times in the manual."""
    lines = re.findall(r"^\{.*", read("docs/json.md").split("## A check")[1], re.MULTILINE)
    check_lines("the manual", lines)


def check_kinds():
    expect("never seen", KINDS.keys() - {kind for kinds in seen.values() for kind in kinds}, set())


run_checks(check_runs, check_serving, check_times, check_manual, check_kinds)
