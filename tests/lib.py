"""Functions that the Python tests share. Each test is started as NAME.py ICEHOST SOURCE_FOLDER.

A test runs in a temporary folder, which has links to the entries of the source folder. `icehost` is
on the PATH.
"""
import json
import os
import re
import signal
import socket
import subprocess
import sys
import tempfile
import time

ICEHOST = os.path.abspath(sys.argv[1])
SOURCE = os.path.abspath(sys.argv[2])
os.environ["PATH"] = f"{os.path.dirname(ICEHOST)}:{os.environ['PATH']}"
SANITIZED = "sanitize" in ICEHOST  # a sanitizer needs more memory and opens files itself
FOLDER = tempfile.TemporaryDirectory()
for entry in os.listdir(SOURCE):
    os.symlink(os.path.join(SOURCE, entry), os.path.join(FOLDER.name, entry))
os.chdir(FOLDER.name)
os.environ["HOME"] = FOLDER.name
# Restores the handler, because a shell starts background processes with SIGINT ignored.
signal.signal(signal.SIGINT, signal.default_int_handler)

# Bytes of a remote_bitbang client: two for each TCK cycle.
RESET = b"26" * 5
TO_SHIFT_DR = b"260404"  # from Run-Test/Idle
BACK = b"262604"  # shifts the last bit and returns to Run-Test/Idle

PINS = ["NRST", "TRST", "TCK", "TMS", "TDI", "TDO"]

failures = []
started = []  # processes


def expect(what, got, wanted):
    if got != wanted:
        failures.append(f"{what}: expected {wanted!r}, found {got!r}")


def run_checks(*checks):
    """Runs the checks, ends every started process, prints the failures, and exits with 0 or 1."""
    try:
        for check in checks:
            check()
    finally:
        for process in started:
            process.kill()
            process.wait()
        print("\n".join(failures))
    sys.exit(bool(failures))


def start(*command, **options):
    """Starts a process, which run_checks ends, and returns it."""
    started.append(subprocess.Popen(command, **options))
    return started[-1]


def output(*command, given=""):
    """Returns the standard output and error of a command, whatever its status."""
    return subprocess.run(command, input=given.encode(), stdout=subprocess.PIPE, check=False,
                          stderr=subprocess.STDOUT, timeout=60).stdout.decode()


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def records_of(lines):
    return [json.loads(line) for line in lines.splitlines()]


def write(path, text):
    os.makedirs(os.path.dirname(os.path.abspath(path)), exist_ok=True)
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)


def waveform(path, steps=1 << 30):
    """Returns the levels of each pin and the TAP states in the first steps of a VCD file."""
    values = dict.fromkeys("!\"#$%&t", "")
    levels, states = dict.fromkeys(PINS, ""), []
    for line in read(path).split("$enddefinitions $end\n")[1].splitlines():
        if line[0] != "#":
            values[line[-1]] = line[1:-2] if line[0] == "s" else line[0]
            continue
        held = min(int(line[1:]), steps) - len(states)
        for pin, code in zip(PINS, values):
            levels[pin] += values[code] * held
        states += [values["t"].replace("?", "unknown")] * held
    return levels, states


class Serve:
    """A running `icehost serve`. `port` is its port, or 0 if it is quiet."""

    def __init__(self, *options, endpoint="tcp:0", **spawn):
        self.process = start(ICEHOST, "serve", endpoint, *options, stderr=subprocess.PIPE, **spawn)
        first = self.process.stderr.readline().decode() if "-q" not in options else ""
        self.port = int((re.findall(r":(\d+)$", first) or ["0"])[0])

    def client(self):
        return socket.create_connection(("127.0.0.1", self.port), timeout=60)

    def play(self, request):
        """Connects, sends a request that ends in Q, and waits until the server disconnects."""
        with self.client() as client:
            client.sendall(request)
            while client.recv(65536):
                pass

    def end(self, signal_number=signal.SIGTERM):
        """Sends a signal (0: none), waits, and returns the exit status and the unread messages."""
        if signal_number:
            self.process.send_signal(signal_number)
        begun = time.monotonic()
        said = self.process.communicate(timeout=20)[1].decode()
        if signal_number and time.monotonic() - begun > 1.5:
            failures.append("a signal took too long")
        return self.process.returncode, re.sub(r"127\.0\.0\.1:\d+", "ADDRESS", said)
