#!/usr/bin/python3 -B
"""Tests the output of --junit with a schema and with a parser of CI results."""
import os
import re
import signal
import socket
import subprocess
import sys
import threading
import time

from junitparser import JUnitXml

sys.path.append(sys.path[0] + "/..")
from lib import ICEHOST, SOURCE, expect, output, read, run_checks, start, write

ID, RESET, PULSE = (f"examples/{name}" for name in (
    "read_idcode.ini", "reset.ini", "reset_pulse.gpio"))
PLUGIN = os.path.join(os.path.dirname(ICEHOST), "tests", "libfaulty_plugin.so")
OTHER = "--idcode 39ca2003"
# The first expectation is not met, so the second section is not reached.
TWO = "[A]\nIR=5,1\nDR=R,8\nTDO=0\n[B]\nIR=5,1\nDR=R,8\n"
# The script enables NRST, which is then low, but expects it to be high.
LOW = "[ZEVA_ICE_GPIO]\nSTART\nGPIO_OE=1\nREPT=3\nPRINT=GPIO_IN # expect NRST=1\nENDR\nEND\n"


def cases_of(path, status):
    """Checks what every file must contain. Returns each case with its result and its message."""
    expect(path, output("xmllint", "--noout", "--schema", f"{SOURCE}/tests/icehost/junit.xsd", path),
           f"{path} validates\n")
    xml = JUnitXml.fromfile(path)
    cases, faults = [], []
    for suite in xml:
        found = [(case.name, *((one.__class__.__name__, one.message) for one in case.result))
                 for case in suite]
        kinds = [one[0] for case in found for one in case[1:]]
        expect(f"{path}: counts of {suite.name}",
               (suite.tests, suite.failures, suite.errors, suite.skipped),
               (len(found), *map(kinds.count, ("Failure", "Error", "Skipped"))))
        # The times are rounded to 1 us.
        times = [case.time for case in suite if case.name != "(script)"]
        expect(f"{path}: times of {suite.name}",
               all(0 <= one for one in times) and sum(times) <= suite.time + 1e-6 * len(times), True)
        cases += [(suite.name, *case) for case in found]
        types = {(one.__class__.__name__, one.type) for case in suite for one in case.result}
        expect("types", types - {("Failure", "value"), ("Error", "run"), ("Skipped", None)}, set())
        faults += [kind for kind in kinds if kind != "Skipped"]
    expect(f"{path}: total", xml.tests, len(cases))
    expect(f"{path}: red for status {status}", bool(faults), status != 0)
    return cases


def run(arguments, status, *cases, script=None):
    """Checks the status and the cases of a run: (suite, name[, kind, prefix of the message])."""
    write("before.xml", "<testsuites/>\n")
    os.replace("before.xml", "j.xml")
    if script is not None:
        with open("script", "wb") as file:
            file.write(script if isinstance(script, bytes) else script.encode())
    done = subprocess.run(f"icehost run -q --junit j.xml {arguments}", shell=True, check=False,
                          capture_output=True, timeout=60)
    expect(arguments, done.returncode, status)
    found = cases_of("j.xml", status)
    short = [one if len(one) == 2 else (*one[:2], one[2][0], one[2][1][:len(wanted[3])])
             for one, wanted in zip(found, cases) if len(one) == 2 or len(wanted) == 4]
    expect(arguments, (len(found), short), (len(cases), list(cases)))


def check_results():
    not_met = "[READ_IDCODE] expected 0x1ce51001, captured 0x39ca2003"
    reset = [(RESET, name) for name in ("WRITE_SCRATCH", "CONTROL", "READ_SCRATCH")]
    skipped = ("Skipped", "not reached")
    lines = [(PULSE, f"line {line}") for line in (7, 10, 13)]
    run(f"{ID} {RESET} {PULSE}", 0, (ID, "CONTROL"), (ID, "READ_IDCODE"), *reset, *lines)
    run(f"{OTHER} {ID} {RESET} {PULSE}", 1, (ID, "CONTROL"), (ID, "READ_IDCODE", "Failure", not_met),
        *((*case, *skipped) for case in reset + lines))
    run(f"{OTHER} --keep-going {ID} {PULSE}", 1, (ID, "CONTROL"),
        (ID, "READ_IDCODE", "Failure", not_met), *lines)
    run(f"{OTHER} --repeat 3 --keep-going {ID}", 1, (ID, "CONTROL"),
        (ID, "READ_IDCODE", "Failure", not_met))
    expect("rounds", re.findall(r"round (\d): \S+:12:5: \[READ", read("j.xml")), ["1", "2", "3"])
    run("script", 1, ("script", "A", "Failure", "[A] expected"), ("script", "B", *skipped), script=TWO)
    run("--keep-going script", 1, ("script", "line 5", "Failure", "expected 0x01, captured 0x3e"),
        script=LOW)
    expect("a loop", "NRST is 0 (3 times)" in read("j.xml"), True)
    run("script", 0, ("script", "(script)"), script=LOW.replace("# expect NRST=1", ""))


def check_faults():
    """Whatever goes wrong, at least one case reports it."""
    whole = "(script)"
    skipped = ("Skipped", "not reached")
    lost = "--probe remote-bitbang:unix:sock --spawn "
    tested = [("WRITE_SCRATCH", *skipped), ("CONTROL", *skipped), ("READ_SCRATCH", *skipped)]
    rows = [(RESET, *row) for row in tested]
    for arguments, status, why in (
            (f"--plugin {PLUGIN} {RESET}", 1, f"{RESET} failed"),
            (f"FAULT=exit --plugin {PLUGIN} {RESET}", 1, f"{RESET}: the plug-in ended the process"),
            (f"FAULT=throw --plugin {PLUGIN} {RESET}", 1, f"{RESET}: the plug-in threw"),
            (f"--plugin /nowhere {RESET}", 3, "cannot load the plug-in"),
            (f"--probe xvc:unix:/nowhere {RESET}", 3, "unix:/nowhere"),
            (f"{RESET} --svg /nowhere/x", 3, "/nowhere/x")):
        if arguments.startswith("FAULT"):
            os.environ["FAULT"], arguments = arguments[6:].split(" ", 1)
        run(arguments, status, *rows, (RESET, whole, "Error", why))
        os.environ.pop("FAULT", None)
    os.environ["FAULT"] = "config"
    run(f"--plugin {PLUGIN} {RESET}", 1, (*rows[0][:2], "Failure", "link_config returned -1"), *rows[1:])
    del os.environ["FAULT"]
    done = [(RESET, row[0]) for row in tested]
    full = "/dev/full: cannot write: No space left"
    for option in ("--vcd", "--html", "--json", "--learn"):
        run(f"{option} /dev/full {RESET}", 3, *done, (RESET, whole, "Error", full))
    run("/nowhere", 1, ("/nowhere", whole, "Error", "/nowhere: No such file"))
    run("--strict script", 1, ("script", "A", *skipped), ("script", whole, "Error", "script has warnings"),
        script="[A]\nIR=5,1\nDR=R,8,0,0\n")
    run("script", 1, ("script", whole, "Error", "script has errors"), script="[A]\nIR=5\n")
    run("--force script", 1, ("script", whole, "Error", "script has errors"), script="[A]\nIR=5\n")
    run(f"{lost} 'icehost serve -q unix:sock --ir-length 4' --spawn-log log {ID}", 1, (ID, "CONTROL"),
        (ID, "READ_IDCODE", "Failure", "[READ_IDCODE] expected"))
    door = socket.socket(socket.AF_UNIX)
    door.bind("door")
    door.listen()
    threading.Thread(target=lambda: door.accept()[0].recv(1)).start()
    run(f"--probe remote-bitbang:unix:door {ID}", 3, (ID, "CONTROL"),
        (ID, "READ_IDCODE", "Error", "link_jtag_execute failed: "))
    full = subprocess.run(["icehost", "run", "--junit", "/dev/full", ID], check=False,
                          capture_output=True)
    expect("a full disk", full.returncode, 3)


def check_texts():
    """A script, and the messages that quote it, may contain any bytes."""
    name = b"[\"'<&>]]>\x01\x1b\x7f\x80\xff\xef\xbf\xbf\xc3\xa9" + b"x" * 1990
    run("--force script", 1, ("script", "\"'<&>]]>   ???\u00e9" + "x" * 1990, "Failure", "["),
        script=b"[" + name + b"]\nIR=5,1\nDR=R,8\nTDO=0\n")
    lines = "".join(f"[{i:0200}]\nIR=5,1\nDR=R,8\n" for i in range(9999))
    run("script", 0, *((("script", f"{i:0200}") for i in range(9999))), script=lines)
    kept = re.search(r"<system-out>(.*)\n\(\d+ more bytes\)</system-out>", read("j.xml"), re.S)
    expect("a limit", len(kept[1]), 1 << 20)
    expect("time", sum(case.time for suite in JUnitXml.fromfile("j.xml") for case in suite) > 0, True)


def check_signal():
    write("endless.gpio", "[ZEVA_ICE_GPIO]\nSTART\nREPT=99999999\nTCK=1\nENDR\n"
          "PRINT=GPIO_IN # expect TDO=1\nEND\n")
    process = start("icehost", "run", "-q", "--junit", "s.xml", "endless.gpio",
                    stderr=subprocess.DEVNULL)
    time.sleep(0.5)
    process.send_signal(signal.SIGTERM)
    expect("a signal", process.wait(20), 130)
    expect("a signal", cases_of("s.xml", 130),
           [("endless.gpio", "line 6", ("Skipped", "not reached")),
            ("endless.gpio", "(script)", ("Error", "interrupted"))])


run_checks(check_results, check_faults, check_texts, check_signal)
