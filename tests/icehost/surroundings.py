#!/usr/bin/python3 -B
"""Tests icehost with closed descriptors, full disks, limits, signals and spawned commands."""
import glob
import json
import os
import re
import signal
import subprocess
import sys
import time
import unicodedata

sys.path.append(sys.path[0] + "/..")
from lib import ICEHOST, SANITIZED, Serve, expect, output, read, run_checks, start, write

PLUGIN = os.path.join(os.path.dirname(ICEHOST), "libicescript.so")
FAULTY = os.path.join(os.path.dirname(ICEHOST), "tests", "libfaulty_plugin.so")
ENDLESS = "tests/scripts/endless_writes.gpio"
SVF = "SIR 5 TDI (01);\nSDR 32 TDI (0);\n"
SCRIPT = "examples/read_idcode.ini"
FULL = "icehost: standard output: No space left on device"
PIPE = "icehost: standard output: Broken pipe"
CLOSED = "icehost: standard output: Bad file descriptor"

# The expected status and last line of standard error, and the command.
COMMANDS = [
    # No file gets the number of a standard descriptor that is closed at the start.
    (1, "icehost: -: Bad file descriptor", "icehost run - <&-"),
    (3, CLOSED, f"icehost run {SCRIPT} >&-"),
    (3, CLOSED, f"icehost run --json - {SCRIPT} >&-"),
    (0, "", f"icehost run --vcd closed.vcd --json closed.json {SCRIPT} <&- 2>&-"),
    # An output that cannot be written is reported and sets the status.
    *((3, "", f"icehost {arguments} >/dev/full 2>/dev/full") for arguments in (
        "--help", "--version", f"run --summary {SCRIPT}", f"run --trace {SCRIPT}")),
    *((3, FULL, f"icehost {arguments} {SCRIPT} >/dev/full") for arguments in (
        "run", "run --json=-", "run --vcd=-", "run --svg=-", "run --html=-", "run --trace=-",
        "check tests/scripts/bad.ini", "check --json=- tests/scripts/bad.ini")),
    (3, FULL, "icehost detect --script gpio -q >/dev/full"),
    *((3, PIPE, f"icehost run {arguments} | head -n 1") for arguments in (
        "reads.gpio", f"--json=- {ENDLESS}", f"--vcd=- {ENDLESS}", f"--trace=- {ENDLESS}")),
    # icehost appends to standard output.
    (0, "", "icehost run --json - --vcd v examples/reset.ini >>appended"),
    # If the reader of the help closes its pipe, icehost prints no message.
    (141, "", "{ sleep 0.2; icehost help; } | true"),
    (3, "", "trap '' PIPE; { sleep 0.2; icehost help; } | true"),
    # A stack of 64 KiB is enough.
    *((0, "", f"ulimit -s 64; icehost {arguments}") for arguments in (
        f"check {SCRIPT}", f"run -q --svf - {SCRIPT} | icehost import -", "detect",
        f"run --trace=a --json b --vcd c --svg d --html e {SCRIPT} examples/read_idcode.gpio")
      if not SANITIZED),
]

# The expected status and seconds, the options of icehost, the spawned command, and the expected
# messages after a failure: about the connection, about the command, and the command's last lines.
SPAWNED = [
    (0, 0, f"run -q {SCRIPT}", "sleep 0.2; icehost serve unix:sim", []),
    (0, 0, "detect -q --spawn-log log", "cat; echo here; icehost serve unix:sim & wait", []),
    (0, 2, f"run -q {SCRIPT}", "(trap '' TERM; sleep 99) & sleep 0.2; icehost serve unix:sim", []),
    (1, 0, f"run -q --plugin {FAULTY} {SCRIPT}", "echo here; icehost serve unix:sim & wait",
     [f"{SCRIPT}: the plug-in ended the process", "was still running; its last lines of output:", "here",
      "icehost: serving remote_bitbang on unix:sim"]),
    (3, 0, f"run {SCRIPT}", "seq 12; printf '\\033[2J\\n' >&2; exit 7",
     ["unix:sim: cannot connect: the spawned server has ended", "ended with status 7; its last lines of output:",
      *map(str, range(4, 13)), " [2J"]),
    (3, 2, "detect", "(trap '' TERM; sleep 99) & sleep 0.2; exit 5",
     ["unix:sim: cannot connect: the spawned server has ended", "ended with status 5 and printed nothing"]),
    (3, 0, "serve unix:served --timeout 0.2 --spawn-log log", "echo here; sleep 99",
     ["unix:sim: no server accepted a connection within 200 ms", "was still running; its last lines of output:", "here"]),
    (3, 0, "serve -q unix:served", "icehost serve -q unix:sim & sleep 0.4; kill -KILL $!; exit 9",
     ["unix:sim: the server closed the connection (is another client connected?)",
      "ended with status 9 and printed nothing"]),
]


def shell(command):
    """Returns the status of a shell command, which writes to the files out and err."""
    with open("err", "w", encoding="utf-8") as err, open("out", "w", encoding="utf-8") as out:
        return subprocess.run(
            ["timeout", "-k", "1", "30", "bash", "-o", "pipefail", "-c", command], check=False,
            stdin=subprocess.DEVNULL, stdout=out, stderr=err).returncode


def last_line(path):
    return (read(path).splitlines() or [""])[-1]


def check_commands():
    write("reads.gpio",
          "[ZEVA_ICE_GPIO]\nSTART\nGPIO_OE=0x1F\nREPT=99999\nPRINT=GPIO_IN\nENDR\nEND\n")
    write("appended", "before\n")
    for status, said, command in COMMANDS:
        expect(command, (shell(command), last_line("err")), (status, said))
    expect("a waveform without standard error", read("closed.vcd")[:8], "$version")
    expect("appended", (read("appended")[:7], last_line("appended")[:10]), ("before\n", '{"totals":'))


def check_lacks():
    """Without enough descriptors or /proc, icehost reports this, not a fault of the script."""
    write("id.svf", SVF)
    for files in range(4, 12):
        for arguments in (f"run -q {SCRIPT}", f"check {SCRIPT}", "import id.svf", "detect"):
            status = shell(f"ulimit -n {files}; icehost {arguments}")
            lack = "Too many open files" in read("err")
            expect(f"{files} files: {arguments}", status, 3 * lack)
    for arguments, reasons in (
            (f"run -q --json - {SCRIPT}", ["standard output", "cannot keep a script in memory",
                                           "cannot keep a script in memory: /proc/self/fd/N"]),
            ("detect --probe xvc:unix:/nowhere --spawn :", ["epoll", "cannot start the --spawn command"])):
        said = [re.sub(r"fd/\d+", "fd/N", read("err")) for files in range(4, 8)
                if shell(f"ulimit -n {files}; icehost {arguments}") == 3]
        expect(f"reasons of {arguments}", list(dict.fromkeys(said)),
               [f"icehost: {reason}: Too many open files\n" for reason in reasons])
    if shell("unshare -rm mount -t tmpfs none /proc") == 0:
        for options, lack in (("", "/proc/self/exe: "), (f"--plugin {PLUGIN}", "/proc/self/fd/")):
            status = shell(f"unshare -rm sh -c 'mount -t tmpfs none /proc; "
                           f"icehost run {options} {SCRIPT}'")
            expect(f"no {lack}", (status, lack in read("err")), (3, True))


def said_under(limit, command):
    """Returns the status and the messages of a command that may use `limit` KiB of memory."""
    return shell(f"ulimit -S -v {limit}; {command}"), read("err")


def check_memory():
    """If memory runs out, icehost names each incomplete output."""
    write("walk.gpio", "[ZEVA_ICE_GPIO]\nSTART\nGPIO_OE=0x1F\nREPT=9999\nTCK=1\n"
          "TCK=0,PRINT=GPIO_IN\nENDR\nEND\n")
    ends = {"j.json": ('{"totals":', '{"end":true}'), "p.svg": "</svg>", "p.html": "</html>"}
    least = next(limit for limit in range(12000, 90000, 50)
                 if "error" not in said_under(limit, "icehost detect -q")[1]
                 and "thread" not in read("err"))
    for command in (
            "icehost run -q --learn learned --json j.json --svg p.svg --html p.html walk.gpio",
            "icehost serve -q unix:sim --json j.json --html p.html & "
            "until [ -S sim ] || ! kill -0 $!; do sleep 0.01; done 2>/dev/null; (ulimit -S -v unlimited; "
            "icehost run -q --probe remote-bitbang:unix:sim walk.gpio; kill $!) 2>/dev/null; wait $!"):
        status, extra = 3, 0
        while status != 0 and extra < 40000:
            write("learned", "before\n")
            shell(f"rm -f {' '.join(ends)} sim")
            status, said = said_under(least + extra, command)
            outputs = [file for file, end in ends.items() if os.path.exists(file)
                       and ("out of memory" in said or not last_line(file).startswith(end))]
            what = f"{least + extra} KiB: {command}"
            expect(what, (outputs, status), ([file for file in outputs if file in said], 3 * bool(said)))
            expect(f"{what}: said", "bad_alloc" in said, False)
            expect(f"{what}: learned", last_line("learned") in ("before", "END"), True)
            extra += max(20, extra // 10)
        expect(f"enough memory: {command}", status, 0)


def check_size_limit():
    """A file that reaches the size limit has only whole lines, or is empty."""
    status = shell("ulimit -f 1; trap '' XFSZ; icehost run -q --trace=t --json j --vcd v --svg s "
                   "--html h examples/read_idcode.gpio examples/*.ini")
    expect("files beyond the limit", status, 3)
    expect("messages", read("err").count("cannot write: File too large"), 5)
    expect("whole lines", [read(file)[-1:] for file in "tjv"], ["\n"] * 3)
    expect("a cut picture or page", read("s") + read("h"), "")


def check_old_files():
    """If a run cannot begin, it does not change or create any file."""
    write("old", "before\n")
    for cannot in ("--plugin /dev/null", "--probe remote-bitbang:unix:/nowhere", "--svg /nowhere/x",
                   "/nowhere"):
        status = shell(f"icehost run --vcd old --json new {cannot} {SCRIPT}")
        expect(cannot, (status != 0, read("old"), os.path.exists("new")), (True, "before\n", False))


def check_shared_files():
    """If an output is also a script or another output, icehost fails and changes no file."""
    write("script.ini", read(SCRIPT))
    os.link("script.ini", "hard_link")
    os.symlink("new", "dangling")
    os.symlink("new", "dangling_too")
    os.mkfifo("one_pipe")
    before = sorted(os.listdir())
    for command in (
            "run --json new --vcd dangling script.ini", "run --json dangling --svg new script.ini",
            "run --json dangling --vcd dangling_too script.ini",
            "run --learn new --html dangling script.ini", "serve --trace=new --json dangling tcp:0",
            "run --json one_pipe --vcd one_pipe script.ini & cat one_pipe; wait $!",
            "run --json /dev/stdout --vcd /dev/stdout script.ini | cat",
            "run --json - --svf /dev/stdout script.ini | cat", "run --json - --vcd - script.ini",
            "run --json /dev/stdout script.ini | cat", "run --vcd hard_link - <script.ini",
            "check --json hard_link script.ini"):
        status = shell(f"icehost {command}")
        expect(command, (status, " is also " in last_line("err")), (2, True))
    expect("a shared file", (sorted(os.listdir()), read("script.ini")), (before, read(SCRIPT)))
    null = "run --json /dev/null --vcd /dev/null --html /dev/stdout script.ini >/dev/null"
    expect(null, shell(f"icehost {null}"), 0)


def ends_by(number, *arguments, out="/dev/null", err="err", said_first="icehost: interrupted"):
    """Checks that a signal ends icehost within 1.5 s, with status 130 and this message."""
    what = f"{' '.join(arguments[:9])} >{out} 2>{err} by {number}"
    with open(out, "wb") as taken, open(err, "wb") as said:
        process = start("icehost", *arguments, stdin=subprocess.DEVNULL, stdout=taken, stderr=said)
    time.sleep(0.3)
    process.send_signal(number)
    begun = time.monotonic()
    expect(what, process.wait(20), 130)
    expect(what, time.monotonic() - begun < 1.5, True)
    if err == "err":
        expect(what, read("err").split("\n")[0], said_first)


def expect_whole(*paths):
    """Checks that the files of an interrupted run are complete."""
    for path in paths:
        if path.endswith(".svg"):
            expect(path, output("xmllint", "--noout", path), "")
        else:
            last = last_line(path)
            if path.endswith(".json"):
                last = json.loads(last).get("status")
            expect(path, last, 130 if path.endswith(".json") else "</html>")


def check_signals():
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        ends_by(number, "run", "--svg", "e.svg", "--json", "e.json", "--vcd", "e.vcd", ENDLESS)
        expect_whole("e.svg", "e.json")
        cuts = re.findall(">The first 1000 of [0-9]* steps<", read("e.svg"))
        expect("the picture of an interrupted run", len(cuts), 1)
    # Endless runs, one of them without calls. An interrupted round does not count.
    write("no_call.ini", "[CONTROL]\n")
    ends_by(signal.SIGINT, "run", "-q", "--repeat", "0", "--summary", "no_call.ini", err="no_call")
    expect("no call", ", failed: 0\noperations: 0," in read("no_call"), True)
    ends_by(signal.SIGINT, "run", "-q", "--repeat", "0", "--summary", "--json", "r.json", SCRIPT,
            err="rounds")
    said = (r"icehost: interrupted \(round \d+\)\n\S+ expectation met in (\d+) of \1 rounds\n"
            r"rounds: \1, failed: 0\noperations: .*\n")
    expect(read("rounds"), bool(re.fullmatch(said, read("rounds"))), True)
    expect("rounds kept", read("r.json").count('"round"'), 2)
    expect_whole("r.json")
    # icehost prints messages after the signal, but nobody reads them.
    write("loud.gpio", "[ZEVA_ICE_GPIO]\nSTART\nGPIO_OE=1\nREPT=999\nPRINT=GPIO_IN\nENDR\n"
          "REPT=999999\nTCK=1\nENDR\nEND\n")
    loud = start("icehost", "run", "--repeat", "0", "--json", "l.json", "loud.gpio",
                 stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    while b"End" not in loud.stdout.readline():
        pass
    loud.stdout.close()
    time.sleep(0.5)
    loud.send_signal(signal.SIGINT)
    expect("a signal and a lost reader", loud.wait(20), 130)
    expect_whole("l.json")
    names = (i * 7919 % 60000 for i in range(60000))
    write("many.ini", "".join(f"[{name}x]\nIR=5,1\nDR=R,8,0\n" for name in names))
    ends_by(signal.SIGINT, "run", "--json", "m.json", "--html", "m.html", "many.ini")
    # The signal arrives while icehost checks the script, or while the plug-in reads it.
    expect_whole(*glob.glob("m.*"))
    ends_by(signal.SIGINT, "check", *["many.ini"] * 50)
    os.mkfifo("fifo")
    write("id.svf", SVF)
    ends_by(signal.SIGINT, "check", "fifo")
    ends_by(signal.SIGINT, "run", "--learn", "fifo", SCRIPT)
    # Nobody reads from this pipe.
    with open(os.open("fifo", os.O_RDWR), "rb"):
        write("fifo", "x")  # now a write of the whole buffer blocks
        ends_by(signal.SIGINT, "run", "--json", "-", ENDLESS, out="fifo")
        ends_by(signal.SIGINT, "run", "--svg=f.svg", "--html=f.html", "reads.gpio", out="fifo")
        expect_whole("f.svg", "f.html")
        expect("result", '"result":"interrupted"' in read("f.html"), True)
        scripts = glob.glob("tests/scripts/*.ini") + glob.glob("examples/*.ini")
        ends_by(signal.SIGINT, "check", "many.ini", *scripts, out="fifo")
        # The pipe is full now.
        ends_by(signal.SIGINT, "detect", out="fifo")
        ends_by(signal.SIGINT, "import", "id.svf", out="fifo")
        ends_by(signal.SIGINT, "import", "-o", "fifo", "id.svf")
        cut = "icehost: fifo: cannot write: Interrupted system call"
        ends_by(signal.SIGINT, "run", "--json", "fifo", SCRIPT, said_first=cut)
        ends_by(signal.SIGINT, "check", "--json", "fifo", SCRIPT, said_first=cut)
        ends_by(signal.SIGINT, "run", "--trace", ENDLESS, err="fifo")
        ends_by(signal.SIGINT, "run", "-q", "--summary", SCRIPT, err="fifo")
        ends_by(signal.SIGINT, "import", "id.svf", out="fifo", err="fifo")


def spawned():
    """Returns the processes of spawned commands and of their guards that are still running."""
    marked = subprocess.run(["grep", "-lsxz", f"SPAWNED={os.getpid()}",
                             *glob.glob("/proc/[0-9]*/environ")],
                            stdout=subprocess.PIPE, check=False)
    return marked.stdout.split()


def start_spawning(options, command, **how):
    return start("env", "--ignore-signal=CHLD", "icehost", *options.split(), "--spawn", command,
                 "--probe", "remote-bitbang:unix:sim",
                 stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                 env={**os.environ, "SPAWNED": str(os.getpid()), "FAULT": "exit"}, **how)


def check_spawned():
    """A spawned command ends with icehost. If icehost fails, it reports the command's state."""
    for status, seconds, options, command, said in SPAWNED:
        begun = time.monotonic()
        process = start_spawning(options, command)
        heads = ["icehost: ", "icehost: the spawned command "] + ["  "] * len(said)
        expect(command, process.communicate(timeout=20)[1].decode(),
               "".join(head + line + "\n" for head, line in zip(heads, said)))
        expect(command, (process.returncode, int(time.monotonic() - begun) // 2 * 2, spawned()),
               (status, seconds, []))
        if "log" in options:
            expect(f"log of {command}", read("log").split("\n")[0], "here")


def check_spawned_and_signals():
    """A signal reaches only icehost. Then icehost, or its guard, ends the spawned command."""
    command = "trap 'echo caught' INT; icehost serve unix:sim & wait; wait"
    for number, status in ((signal.SIGINT, 130), (signal.SIGKILL, -signal.SIGKILL)):
        process = start_spawning(f"run -q --spawn-log log {ENDLESS}", command,
                                 start_new_session=True)
        time.sleep(0.5)
        os.killpg(process.pid, number)
        expect(f"{number}", process.wait(20), status)
        time.sleep(0.5 if number == signal.SIGKILL else 0)
        expect(f"{number}: left", (spawned(), "caught" in read("log")), ([], False))
    process = start_spawning("serve -q unix:served", "trap 'sleep 1; exit' TERM; "
                             "yes | head -c 50000000; icehost serve unix:sim & wait")
    time.sleep(1)
    kept = [os.stat(path.decode().replace("environ", "fd/1")).st_blocks for path in spawned()]
    expect("output that is kept", 0 < max(kept, default=0) < 1000, True)
    process.terminate()
    expect("waits for the command", (process.wait(20), spawned()), (0, []))
    process = start_spawning(f"run -q {ENDLESS}", "trap 'sleep 2; exit' TERM; "
                             "icehost serve unix:sim & wait; wait")
    for number, seconds in ((signal.SIGINT, 0.5), (signal.SIGTERM, 1)):
        time.sleep(seconds)
        process.send_signal(number)
    expect("a second signal", process.wait(20), 128 + signal.SIGTERM)
    time.sleep(1.5)
    expect("left after a second signal", spawned(), [])


def check_taken_port():
    """A run connects only to the server of its spawned command, never to itself or others."""
    server = Serve(endpoint="unix:sim")
    process = start_spawning(f"run {SCRIPT}", "touch started")
    expect("taken", (process.communicate(timeout=20)[1], os.path.exists("started")),
           (b"icehost: unix:sim: a server is already running there, so the --spawn command was not "
            b"started\n", False))
    expect("taken", (process.returncode, server.end()), (3, (0, "")))
    write("self.sh", f"""ip link set lo up; echo 9824 9825 >/proc/sys/net/ipv4/ip_local_port_range
        icehost run -q --probe remote-bitbang:127.0.0.1:9824 --spawn 'sleep 0.2
        icehost serve tcp:9824' {SCRIPT}""")
    if shell("unshare -rn true") == 0:
        expect("connected to itself", (shell("unshare -rn sh self.sh"), read("err")), (0, ""))
    # Of a host's two addresses, only one has a server.
    write("two.sh", f"""ip link set lo up; printf '127.0.0.1 two\\n127.0.0.2 two\\n' >hosts
        mount --bind hosts /etc/hosts
        for at in 1 2; do icehost run -q --timeout 1 --probe remote-bitbang:two:9824 \\
            --spawn "exec icehost serve -q tcp:127.0.0.$at:9824" {SCRIPT}; done""")
    if shell("unshare -rmn true") == 0:
        expect("two addresses", (shell("unshare -rmn sh two.sh"), read("err")), (0, ""))


def check_ignored_signals():
    """icehost ignores signals that were ignored when it was started."""
    process = start("env", "--ignore-signal=INT", "--ignore-signal=HUP", "icehost", "run", ENDLESS,
                    stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    for number in (signal.SIGINT, signal.SIGHUP):
        time.sleep(0.3)
        process.send_signal(number)
    time.sleep(0.3)
    expect("ended by an ignored signal", process.poll(), None)
    process.terminate()
    expect("ends", process.wait(20), 130)


def check_half_a_script():
    """After a signal the file of an incomplete script is empty."""
    for form, scans in ("gpio", 20000), ("jtag", 150000):
        write("long.svf", "SDR 64 TDI (5555555555555555);\n" * scans)
        write(f"half.{form}", "")
        process = start("icehost", "import", "--script", form, "long.svf", "-o", f"half.{form}")
        while process.poll() is None and os.path.getsize(f"half.{form}") == 0:
            time.sleep(0.01)
        process.send_signal(signal.SIGINT)
        expect(f"half a {form} script", (process.wait(20), read(f"half.{form}")), (130, ""))


def check_terminal():
    """On a terminal icehost shows and erases progress, and replaces control characters."""
    terminal = ["timeout", "-k", "1", "30", "script", "/dev/null", "-qec"]
    write("nested.gpio", "[ZEVA_ICE_GPIO]\nSTART\nGPIO_OE=0x1F\n" + "REPT=2000000000\n" * 3 +
          "TCK=1\n" + "ENDR\n" * 3 + "END\n")
    endless = "timeout -s INT 1.7 icehost run --junit /dev/null nested.gpio"
    shown = output(*terminal, endless)
    drawn = re.findall("operations, .*?, 0 %, .*? h left", shown)
    expect(f"progress in {shown!r}", 2 <= len(drawn) <= 5, True)
    expect("progress is left", shown.count("\r\x1b[K"), shown.count("operations, ") + 1)
    for rounds in (300000, 3 * 10 ** 7, 10 ** 9):
        shown = output(*terminal, f"timeout -s INT 1.6 icehost run --repeat {rounds} {SCRIPT}")
        drawn = re.findall(rf"round (\d+) of {rounds}, 0 failed, (\d+) operations, (\d+)/s, (\d+) %, "
                           r"(\d+ \w+) left", shown)
        expect(f"rounds in {shown!r}", drawn != [], True)
        for current, done, rate, percent, left in drawn:
            expect("round", int(current), (int(done) + 1) // 2)
            expect("rate", 0.99 < int(done) / int(rate) < 1.9, True)
            expect("percent", int(percent), int(done) * 100 // (2 * rounds))
            seconds = (2 * rounds - int(done)) / int(rate)
            units = {"s": seconds, "min": seconds / 60, "h": seconds / 3600}
            count, unit = left.split()
            if not any(0.9 < seconds / bound < 1.1 for bound in (100, 6000)):
                expect(f"unit for {seconds} s", unit,
                       "s" if seconds < 100 else "min" if seconds < 6000 else "h")
            # Both the rate and the count are rounded.
            expect(f"{seconds} s are {left}",
                   abs(units[unit] - int(count)) < 0.6 + units[unit] / int(rate), True)
    shown = output(*terminal, f"timeout -s INT 1.3 icehost run --repeat 0 {SCRIPT}")
    drawn = re.findall(r"round \d+, 0 failed, \d+ operations, \d+/s(.*)", shown)
    expect(f"endless rounds in {shown!r}", (drawn != [], " of " in shown), (True, False))
    write("prints.gpio", "[ZEVA_ICE_GPIO]\nSTART\nGPIO_OE=0x1F\nREPT=9999\nREPT=99999\nTCK=1\n"
          "ENDR\nPRINT=GPIO_IN\nENDR\nEND\n")
    shown = output(*terminal, "timeout -s INT 1.6 icehost run prints.gpio")
    expect("messages on their own lines", re.findall("left[^\r]", shown), [])
    shell(endless)
    expect("progress in a file", read("err"), "icehost: interrupted\n")
    write("bold.ini", "[\x1b[7m\x9b]\nIR=5\nDR=W,0\n")
    shown = output(*terminal, "icehost run --force bold.ini; icehost check bold.ini '\x1b[7m'")
    expect("controls", [text for text in ("\x1b[7m", "\x9b") if text in shown], [])
    hidden = {chr(code) for code in range(1, sys.maxunicode + 1)
              if unicodedata.category(chr(code)) in ("Cc", "Cf", "Zl", "Zp")}
    shown = output("icehost", "check", "".join(sorted(hidden)))
    expect("hidden", sorted(map(ascii, hidden.intersection(shown) - {"\t", "\n"})), [])
    near = {chr(ord(one) + by) for one in hidden for by in (-1, 1)} - hidden - {"\0"}
    near = {one for one in near if unicodedata.category(one) != "Cn"}  # unassigned
    near |= set("\u07ff\u0800\u0fff\uffff\U00010000\U0010ffff")
    shown = output("icehost", "check", "".join(sorted(near)))
    expect("shown", sorted(map(ascii, near.difference(shown))), [])
    shell("icehost run --force bold.ini")
    expect("a file", "\x1b[7m\x9b syntax error" in read("out"), True)


run_checks(check_commands, *([] if SANITIZED else [check_lacks, check_memory]),
           check_size_limit, check_old_files, check_shared_files, check_signals,
           check_spawned, check_spawned_and_signals, check_taken_port, check_ignored_signals,
           check_half_a_script, check_terminal)
