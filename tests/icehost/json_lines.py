#!/usr/bin/python3
"""What icehost writes with --json, against its schema and its manual.

usage: json_lines.py ICEHOST SOURCE_FOLDER
"""
import glob
import json
import os
import re
import socket
import subprocess
import sys
import tempfile

import jsonschema

ICEHOST = os.path.abspath(sys.argv[1])
# Commands find the source folder's files, but leave their own elsewhere.
SCRATCH = tempfile.TemporaryDirectory()
for entry in os.listdir(sys.argv[2]):
    os.symlink(os.path.join(os.path.abspath(sys.argv[2]), entry), os.path.join(SCRATCH.name, entry))
os.chdir(SCRATCH.name)
MANUAL = "docs/json.md"
HOSTILE = b'[a"\\,}\x1b\x7f\x01\xff\xc3\xa9\xe2\x80\xae\xf0\x9f\x94\xa7]\nIR=5,1\nDR=R,8,0\n"x\n'

with open("docs/icehost.schema.json", encoding="ascii") as file:
    SCHEMA = json.load(file)
jsonschema.Draft202012Validator.check_schema(SCHEMA)
KINDS = {
    kind["$ref"]: jsonschema.Draft202012Validator({**kind, "$defs": SCHEMA["$defs"]})
    for kind in SCHEMA["oneOf"]
}
failures = []
seen = {}  # the kind of each line


def kinds_of(value):
    return [name for name, kind in KINDS.items() if kind.is_valid(value)]


def check_lines(what, lines):
    """Each is of one kind, and of none with a key more or less."""
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
            failures.append(f"{what}: the schema takes anything for {line}")


def run(*arguments, script=b""):
    command = [ICEHOST, *arguments, "--json", "-"]
    done = subprocess.run(command, input=script, capture_output=True, check=False)
    lines = done.stdout.decode("ascii").splitlines()
    check_lines(" ".join(arguments), lines)
    values = [json.loads(line) for line in lines]
    last = {key: values[-1].get(key) for key in ("end", "errors")}
    if (done.returncode == 0) != (last["end"] is True or last["errors"] == 0):
        failures.append(f"{arguments}: status {done.returncode}, at the end {values[-1]}")
    return values


def serve(*requests):
    """What is told of clients, each of which sends one of these and waits for as many answers."""
    command = [ICEHOST, "serve", "tcp:0", "--json", "served"]
    with subprocess.Popen(command, stderr=subprocess.PIPE) as server:
        port = int(server.stderr.readline().decode().rpartition(":")[2])
        for request in requests:
            with socket.create_connection(("127.0.0.1", port)) as client:
                client.sendall(request + b"RQ")
                while client.recv(4096):
                    pass
        server.terminate()
        server.wait()
    with open("served", encoding="ascii") as file:
        lines = file.read().splitlines()
    check_lines("serve", lines)
    return [json.loads(line) for line in lines]


def check_serving():
    to_shift, back = b"260404", b"262604"
    reset = b"2626262626" + b"04"
    values = serve(reset + b"04" + to_shift + b"04" * (1 << 20) + back, b"2604262604" + b"tr")
    kinds = [next(iter(value)) for value in values]
    wanted = "schema client reset idle scan client client scan pins reset pins client end"
    if kinds != wanted.split() or values[4].get("bits") != (1 << 20) + 1:
        failures.append(f"serve tells {kinds}")


def check_runs():
    for verb in (("run", "--force"), ("check",)):
        for path in glob.glob("examples/*.[gi]*") + glob.glob("tests/scripts/*"):
            if "endless" not in path and not path.endswith(".bin"):
                run(*verb, path)
        values = run(*verb, "-", script=HOSTILE)
        if not any("\ufffd" in text for value in values for text in map(str, value.values())):
            failures.append(f"{verb}: invalid UTF-8 is not replaced")
    run("run", "--wire", "cjtag2", "examples/read_idcode.ini")
    run("run", "--keep-going", "--idcode", "3", "examples/read_idcode.ini")
    run("run", "--force", "/dev/null")


def check_kinds():
    unseen = KINDS.keys() - {kind for kinds in seen.values() for kind in kinds}
    if unseen:
        failures.append(f"never seen: {unseen}")


def check_manual():
    with open(MANUAL, encoding="utf-8") as file:
        check_lines(MANUAL, re.findall(r"^\{.*", file.read(), re.MULTILINE))


check_runs()
check_serving()
check_manual()
check_kinds()
print("\n".join(failures) or f"{len(seen)} lines, all well")
sys.exit(1 if failures else 0)
