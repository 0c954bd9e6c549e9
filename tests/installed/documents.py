#!/usr/bin/python3 -B
"""Tests the documents: runs or compares every block, and follows every link.

usage: documents.py ICEHOST SOURCE_FOLDER [DOCUMENT...]. The commands use the files installed with
ICEHOST (`cmake --install build/dev --prefix PREFIX`; ctest uses build/dev/installed).
CONTRIBUTING.md describes how blocks are marked.
"""
import codecs
import glob
import os
import random
import re
import select
import shutil
import subprocess
import sys
import tempfile
import time

sys.path.append(sys.path[0] + "/..")
from lib import ICEHOST, failures, read, run_checks, write

PREFIX = os.path.dirname(os.path.dirname(ICEHOST))
# Links may lead only to these installed files.
INSTALLED = ("README.md", "CHANGELOG.md", "CONTRIBUTING.md", "docs", "examples")
# The folder of the documents in a Debian package.
MANUALS = "/usr/share/doc/icescript"
PORTS = ("5555", "6666", "9824")
SECONDS = 30
# Users read these in a clone of the repository, and the other documents in the installed package.
OF_A_CLONE = ("README.md", "CONTRIBUTING.md")
MARKS = {"console": {"exit", "run-by", "hardware"}, "text": {"file", "from"}}
FENCE = re.compile(r"^( *)(```+)([^`\n]*)\n(.*?)^\1\2 *$", re.MULTILINE | re.DOTALL)


def fail(place, *lines):
    failures.append("\n  ".join([f"{place}: {lines[0]}", *lines[1:]]))


def free_ports():
    """Returns a free port for each port of the documents, below those that the system assigns.

    Two tests that run at once choose from different ranges."""
    first = 20000 + os.getpid() % 120 * 100
    listening = read("/proc/net/tcp")
    free = [port for port in range(first, first + 100)
            if f":{port:04X} 00000000:0000 0A" not in listening]
    return dict(zip(PORTS, map(str, random.sample(free, len(PORTS)))))


def write_program(path, line):
    write(path, f"#!/bin/sh\n{line}\n")
    os.chmod(path, 0o755)


class Shell:
    """A bash that runs one command after another in `folder`."""

    LOOP = ('while IFS= read -r -d "" -u 9 command; do eval "$command"; '
            'printf "%s %d\\n" "$SENTINEL" $?; done 9<&"$COMMANDS"')

    def __init__(self, folder):
        self.sentinel = f"@{random.randrange(1 << 64):x}@"
        self.output = ""
        self.decoder = codecs.getincrementaldecoder("utf-8")("replace")
        reading, self.commands = os.pipe()
        environment = dict(
            os.environ, CMAKE_PREFIX_PATH=PREFIX, PKG_CONFIG_PATH=f"{PREFIX}/lib/pkgconfig",
            COMMANDS=str(reading), SENTINEL=self.sentinel, HOME=folder, TERM="dumb", LC_ALL="C.UTF-8",
            PATH=f"{folder}/.programs:{PREFIX}/bin:/usr/bin:/bin:{os.environ['PATH']}")
        self.process = subprocess.Popen(
            ["bash", "--noprofile", "--norc", "-c", self.LOOP],
            cwd=folder, env=environment, pass_fds=[reading], start_new_session=True,
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        os.close(reading)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        os.close(self.commands)
        subprocess.run(["pkill", "-KILL", "-s", str(self.process.pid)], check=False)
        self.process.wait()

    def wait_for(self, condition):
        """Reads output until `condition()` is true, for at most SECONDS, and returns its result."""
        end = time.monotonic() + SECONDS
        while not (result := condition()) and time.monotonic() < end:
            if select.select([self.process.stdout], [], [], 0.1)[0]:
                if not (printed := os.read(self.process.stdout.fileno(), 1 << 16)):
                    return None
                self.output += self.decoder.decode(printed)
        return result

    def run(self, command, expected):
        """Returns the status (None if the command hangs) and the output (None if as expected)."""
        os.write(self.commands, command.encode() + b"\0")
        ended = re.compile(rf"{self.sentinel} (\d+)\n")
        end = self.wait_for(lambda: ended.search(self.output))
        if not end:
            return None, self.output
        self.output = self.output[:end.start()] + self.output[end.end():]
        pattern = re.compile(pattern_of(expected))
        # Background jobs may print later.
        if self.has_jobs():
            self.wait_for(lambda: pattern.fullmatch(with_line_end(self.output)))
        printed, self.output = with_line_end(self.output), ""
        return int(end[1]), None if pattern.fullmatch(printed) else printed

    def has_jobs(self):
        children = subprocess.run(["pgrep", "-P", str(self.process.pid)], capture_output=True)
        return children.returncode == 0


def with_line_end(text):
    return text if not text or text.endswith("\n") else text + "\n"


def pattern_of(expected):
    """Returns a pattern in which `...` matches any lines or, within a line, any characters."""
    return "".join(
        r"(?:.*\n)*" if line == "..." else re.escape(line).replace(re.escape("..."), ".*") + r"\n"
        for line in expected)


def commands_of(lines):
    """Returns each command of a block with its output, or None if the block begins with output."""
    commands = []
    for line in lines:
        if commands and commands[-1][0].endswith("\\") and not commands[-1][1]:
            commands[-1][0] += "\n" + line
        elif line.startswith("$ "):
            commands.append([line[2:], []])
        elif commands:
            commands[-1][1].append(line)
        else:
            return None
    return commands


def blocks_of(document, text):
    """Yields (place, language, marks, lines) for each block."""
    if "```" in FENCE.sub("", text):
        fail(document, "a block does not end")
    for block in FENCE.finditer(text):
        place = f"{document}:{text.count(chr(10), 0, block.start()) + 1}"
        language, *words = block[3].split() or [""]
        marks = dict((word.split("=", 1) + [""])[:2] for word in words)
        lines = [line[len(block[1]):] for line in block[4].splitlines()]
        known = MARKS.get(language, {"file", "from"})
        if len(marks) > 1 or not set(marks) <= known or not (marks or language in MARKS):
            fail(place, f"a block cannot be marked {block[3]!r}")
            continue
        yield place, language, marks, lines


def run_block(shell, place, marks, lines, here):
    commands = commands_of(lines)
    if not commands:
        fail(place, "a console block must begin with a command: $ ...")
        return
    if "hardware" in marks:
        return
    for number, (command, expected) in enumerate(commands, 1):
        if "run-by" in marks:
            if expected or command.removeprefix("sudo ") not in read(marks["run-by"]):
                fail(place, f"{marks['run-by']} does not run this: {command}")
            continue
        wanted = int(marks.get("exit", 0)) if number == len(commands) else 0
        status, printed = shell.run(here(command), [here(line) for line in expected])
        if status is None:
            fail(place, f"$ {command}", "did not end, and printed", *printed.splitlines())
            return
        if printed is not None:
            fail(place, f"$ {command}", "printed", *printed.splitlines(), "expected", *expected)
        elif status != wanted:
            fail(place, f"$ {command}", f"exited with status {status}, expected {wanted}")


def run_document(document):
    text = read(document)
    check_links(document, text)
    free = free_ports()

    def here(line):
        line = line.replace(MANUALS, PREFIX + MANUALS.removeprefix("/usr"))
        return re.sub(r"\b(" + "|".join(PORTS) + r")\b", lambda match: free[match[0]], line)

    with tempfile.TemporaryDirectory() as folder:
        if document in OF_A_CLONE:
            shutil.copytree("examples", os.path.join(folder, "examples"))
            # Does what ./dev does after the build.
            write_program(os.path.join(folder, "dev"), 'exec icehost "$@"')
        # OpenOCD opens only the port that the documents use.
        write_program(os.path.join(folder, ".programs", "openocd"), "exec /usr/bin/openocd -c "
                      f"'gdb_port disabled; telnet_port disabled; tcl_port {free['6666']}' \"$@\"")
        with Shell(folder) as shell:
            for place, language, marks, lines in blocks_of(document, text):
                body = "".join(line + "\n" for line in lines)
                if language == "console":
                    run_block(shell, place, marks, lines, here)
                elif "file" in marks:
                    write(os.path.join(folder, marks["file"]), here(body))
                elif "from" in marks and body not in read(marks["from"]):
                    fail(place, f"{marks['from']} does not contain this block")
                if language == "text" and any(line.startswith("$ ") for line in lines):
                    fail(place, "a command in a block of text")


def anchors_of(text):
    """Yields the name of the anchor that each heading gets on a web page."""
    seen = {}
    for heading in re.findall(r"^#+ (.*)$", FENCE.sub("", text), re.MULTILINE):
        name = re.sub(r"[^\w\- ]", "", re.sub(r"\]\([^)]*\)", "]", heading).lower())
        name = name.replace(" ", "-")
        yield name + (f"-{seen[name]}" if name in seen else "")
        seen[name] = seen.get(name, 0) + 1


def check_links(document, text):
    outside = re.sub(r"`[^`\n]*`", "", FENCE.sub("", text))
    for link in re.findall(r"\]\(([^)\s]+)\)", outside):
        if link.startswith("https://"):
            continue
        path, _, anchor = link.partition("#")
        target = os.path.normpath(os.path.join(os.path.dirname(document), path)) if path else document
        leads = target.split("/")[0] in INSTALLED and os.path.exists(target)
        if not leads or (anchor and anchor not in anchors_of(read(target))):
            fail(document, f"a link leads nowhere: {link}")


def check_documents():
    documents = sys.argv[3:] or sorted(glob.glob("*.md") + glob.glob("docs/*.md"))
    for document in documents:
        run_document(document)
    if not documents:
        fail("documents", "no documents found")


run_checks(check_documents)
