#!/usr/bin/python3 -B
"""Tests icehost serve with odd, broken or hostile clients and upstream servers."""
import fcntl
import os
import re
import signal
import socket
import struct
import subprocess
import sys
import threading
import time

sys.path.append(sys.path[0] + "/..")
from lib import (BACK, ICEHOST, RESET, TO_SHIFT_DR, Serve, expect, failures, output, read,
                 records_of, run_checks, start, write)

IDCODE = RESET + b"04" + TO_SHIFT_DR + b"0R4" * 31 + b"2R6" + BACK[2:]


def wait_until(what, reached):
    for _ in range(500):
        if reached():
            return
        time.sleep(0.02)
    failures.append(f"{what}: not within 10 s")


def flood_until_closed(client):
    try:
        while True:
            client.sendall(b"04" * 50000)
    except OSError:
        pass


def ask(client, request):
    """Sends a request and returns all answers to it."""
    client.sendall(request)
    wanted, answers = request.count(b"R"), b""
    while len(answers) < wanted and (got := client.recv(65536)):
        answers += got
    return answers.decode()


class Upstream:
    """A server for one client. It adds all received bytes to `came`, and sends `answer(bytes)`."""

    def __init__(self, answer):
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.name = f"remote-bitbang:127.0.0.1:{self.listener.getsockname()[1]}"
        self.came = b""
        self.answer = answer
        threading.Thread(target=self.serve, daemon=True).start()

    def serve(self):
        self.connection, _ = self.listener.accept()
        try:
            while got := self.connection.recv(65536):
                self.came += got
                if answer := self.answer(got):
                    self.connection.sendall(answer)
        except OSError:
            pass

    def close(self):
        self.connection.shutdown(socket.SHUT_RDWR)
        self.connection.close()


def ones(got):
    return b"1" * got.count(b"R")


def check_passing_on():
    """The upstream server receives all changes that clients make, and nothing else."""
    upstream = Upstream(ones)
    serve = Serve("-v", "--probe", upstream.name)
    first = serve.client()
    expect("answers", ask(first, b"Bbx0tR\n0447Q"), "1")
    expect("after Q", first.recv(1), b"")
    second = serve.client()
    # The last write of the first client was also 7, so this 7 changes nothing.
    expect("answers", ask(second, b"7rsRutR06R"), "111")
    second.close()
    status, said = serve.end()
    expect("passed on", (upstream.came.replace(b"Q", b""), status), (b"0tR47rsRutR06R", 0))
    expect("verbose", said.splitlines(), [
        "icehost: client 1 connected from ADDRESS",
        "icehost: client 1 left (bytes: 12)",
        "icehost: client 2 connected from ADDRESS",
        "icehost: client 2 left (bytes: 10)",
    ])


def check_loss_between_scripts():
    """A lost connection ends the run, even between scripts and after a script without faults."""
    upstream = Upstream(lambda got: ones(got) if upstream.came.count(b"R") < 2 else upstream.close())
    scripts = ["tests/scripts/reset_only.ini"] * 4
    said = output("icehost", "run", "-q", "--keep-going", "--probe", upstream.name, *scripts)
    expect("a second message", said.splitlines()[1:], [])
    expect("the first script", upstream.came.count(b"R"), 2)


def check_recording():
    """Files grow with each scan, and are complete at the end. A second client is refused."""
    serve = Serve("--trace=t", "--json", "j", "--vcd", "v", "--idcode", "2badc001")
    one = serve.client()
    answers = ask(one, IDCODE)
    expect("IDCODE", int(answers[::-1], 2), 0x2BADC001)
    expect("trace", read("t").splitlines()[1:],
           ["9 TAP reset (TMS)", "15 DR 32 bits 0x00000000 -> 0x2badc001"])
    expect("JSON", len(read("j").splitlines()), 4)
    expect("waveform", {"sclient_1 o", "#85"} <= set(read("v").splitlines()), True)
    other = serve.client()
    expect("a second client", other.recv(1), b"")
    expect("the first client stays, also with invalid bytes", ask(one, b"BxRb\n~R"), "11")
    one.close()
    expect("the next", ask(serve.client(), b"R"), "1")
    status, said = serve.end()
    expect("busy", (status, set(said.splitlines())),
           (0, {"icehost: a client was refused because another one is connected"}))
    told = re.sub(r"127\.0\.0\.1:\d+", "ADDRESS", read("t")).splitlines()
    expect("trace", told[0], "0 client 1 connected from ADDRESS")
    expect("trace", told[-4:], [
        "86 client 1 left (bytes: 125, scans: 1)",
        "86 client 2 connected from ADDRESS",
        "86 client 2 left (bytes: 1, scans: 0)",
        "# ended",
    ])
    expect("end", records_of(read("j"))[-1], {"end": True})
    expect("waveform", read("v").splitlines()[-1], "#86")


def check_xvc():
    """serve answers XVC commands up to the first invalid command, and then disconnects the client.
    An incomplete command does not affect the next client."""
    serve = Serve("-v", "--protocol", "xvc")
    info = b"xvcServer_v1.0:4096\n"
    lengths = "expected a shift of 1 to 16384 bits, got"
    wanted = []
    for number, (request, answers, why) in enumerate([
        (b"getinfo:settck:\1\2\3\4foo\n", info + b"\1\2\3\4", 'unknown command "foo "'),
        (b"shift:\0\0\0\0", b"", f"{lengths} 0"),
        (b"getinfo:shift:\xff\xff\xff\xff", info, f"{lengths} 4294967295"),
        (b"getinfo:shift:\x08\0\0\0\xff", info, None),
        (b"getinfo:", info, None),
    ], 1):
        client = serve.client()
        client.sendall(request)
        if not why:
            client.shutdown(socket.SHUT_WR)
        expect(why, b"".join(iter(lambda one=client: one.recv(99), b"")), answers)
        wanted += [f"icehost: client {number} connected from ADDRESS"]
        wanted += [f"icehost: client {number} was disconnected: {why}"] if why else []
        wanted += [f"icehost: client {number} left (bytes: {len(request)})"]
    status, said = serve.end()
    expect("verbose", (status, said.splitlines()), (0, wanted))


def break_off(client):
    """Resets the connection, so that the other side finds it lost."""
    client.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    client.close()


def check_next():
    """serve accepts the next client even if it has not yet read all bytes of the previous one."""
    serve = Serve()
    for leave in (socket.socket.close, break_off, lambda client: client.sendall(b"Q"),
                  lambda client: client.sendall(b"04" * 50000 + b"Q")):
        for _ in range(5):
            first = serve.client()
            expect("first", ask(first, b"R"), "1")
            serve.process.send_signal(signal.SIGSTOP)
            leave(first)
            following = serve.client()
            serve.process.send_signal(signal.SIGCONT)
            expect("the next", ask(following, b"R"), "1")
            following.close()
    # A client that sends without a pause stays connected, and the next client is refused.
    flooding = serve.client()
    threading.Thread(target=flood_until_closed, args=(flooding,), daemon=True).start()
    expect("a second client", serve.client().recv(1), b"")
    expect("reported", serve.end(),
           (0, "icehost: a client was refused because another one is connected\n"))


def check_lost():
    """If the upstream server is lost or sends invalid answers, serve ends with complete files."""
    ended = "the server closed the connection"
    cut_off = r"the last \d+ of \d+ steps were not recorded"
    for name, answer, deed, request, why in [
        ("idle", ones, "close", b"", ended),
        ("killed", ones, "close", IDCODE * 50, f"({ended}|connection lost)"),
        ("garbage", lambda got: b"x" * got.count(b"R"), None, IDCODE,
         "expected a TDO level, got the byte 120"),
        ("out of step", lambda got: ones(got) + b"1", None, IDCODE, "unexpected answer"),
        ("hangs", lambda _: b"", None, IDCODE, "no answer within 300 ms"),
        ("signal", lambda _: b"", signal.SIGTERM, IDCODE, cut_off),
        ("interrupt", lambda _: b"", signal.SIGINT, IDCODE, cut_off),
    ]:
        timeout = "20" if deed else "0.3"
        upstream = Upstream(answer)
        serve = Serve("--probe", upstream.name, "--timeout", timeout, "--trace=t", "--json", "j",
                      "--vcd", "v")
        client = serve.client()
        expect(name, ask(client, b"t0rR") if answer == ones else "1", "1")
        if request:
            client.sendall(request)
            wait_until(name, lambda: len(upstream.came) > 8)
        if deed == "close":
            upstream.close()
        status, said = serve.end(None if deed == "close" else deed)
        wanted = f"icehost: (ADDRESS|interrupted): .*{why}.*\n"
        expect(name, (status, re.fullmatch(wanted, said) is None), (3, False))
        lines = records_of(read("j"))
        expect(name, (lines[-1], "error" in lines[-2]), ({"end": False}, True))
        expect(name, [line["client"] for line in lines if "client" in line], ["connected", "left"])
        expect(name, read("t").splitlines()[-1].startswith("# failed"), True)
        expect(name, re.fullmatch(r"#\d+", read("v").splitlines()[-1]) is not None, True)


def late(got):
    time.sleep(0.05)
    return ones(got)


def check_signal():
    """After a signal, serve passes on all bytes or reports the loss, and sends a Q upstream."""
    for number, answer, outputs, status, wanted in [
        (signal.SIGTERM, ones, ["--trace=t"], 0, ""),
        (signal.SIGINT, late, ["--trace=t"], 0, ""),
        (signal.SIGTERM, late, [], 0, ""),
        (signal.SIGTERM, lambda _: b"", ["--trace=t"], 3,
         "the last 86 of 86 steps were not recorded"),
        (signal.SIGINT, lambda _: b"", [], 3,
         "the last bytes of client 1 may not have reached the probe"),
    ]:
        upstream = Upstream(answer)
        serve = Serve("--probe", upstream.name, *outputs)
        client = serve.client()
        client.sendall(IDCODE + b"Q")
        client.close()
        said = f"icehost: interrupted: {wanted}\n" if wanted else ""
        expect(f"{number} {wanted}", serve.end(number), (status, said))
        if outputs:
            expect(wanted, read("t").count("DR 32 bits 0x00000000 -> 0xffffffff\n"), status == 0)
        wait_until(f"Q after {number}", lambda up=upstream: up.came.endswith(b"Q"))


def check_good_bye():
    """However a run ends, the server gets a Q before the connection is closed."""
    for number, answer, arguments, status in [
        (signal.SIGINT, ones, ["tests/scripts/endless_writes.gpio"], 130),
        (signal.SIGTERM, late, ["--vcd", "v", "tests/scripts/endless_writes.gpio"], 130),
        (signal.SIGTERM, lambda _: b"", ["examples/read_idcode.ini"], 130),
        (None, lambda _: b"", ["--timeout", "0.2", "examples/read_idcode.ini"], 3),
        (None, lambda got: b"x" * got.count(b"R"), ["examples/read_idcode.ini"], 3),
    ]:
        upstream = Upstream(answer)
        run = start(ICEHOST, "run", "-q", "--probe", upstream.name, *arguments,
                    stderr=subprocess.DEVNULL)
        wait_until("a connection", lambda up=upstream: up.came)
        if number:
            run.send_signal(number)
        expect("status", run.wait(20), status)
        wait_until(f"Q after {number}, {arguments}", lambda up=upstream: up.came.endswith(b"Q"))


def check_cut_outputs():
    """If an output cannot be written, serve ends, and the other outputs are complete."""
    for output in ("--trace=/dev/full", "--json=/dev/full", "--vcd=/dev/full", "--json=-"):
        with open("/dev/full", "wb") as full:
            serve = Serve("-q", output, "--trace=t" if "json" in output else "--json=j",
                          endpoint="unix:door", stdout=full)
            wait_until("the door", lambda: os.path.exists("door") or serve.process.poll() == 3)
            try:
                client = socket.socket(socket.AF_UNIX)
                client.connect("door")
                client.sendall(RESET)
            except OSError:
                pass
            status, said = serve.end(None)
            expect(output, (status, said.count("No space left on device")), (3, 1))
            last = read("t" if "json" in output else "j").splitlines()[-1]
            expect(output, last == '{"end":false}' or "No space left" in last, True)
            expect(output, os.path.exists("door"), False)
    # A signal ends serve even if nobody reads its output.
    out, reader = os.pipe()
    serve = Serve("--trace=-", stdout=reader)
    client = serve.client()
    client.settimeout(0.2)
    try:
        for _ in range(1000):
            client.sendall(b"rs" * 2000)
    except OSError:
        pass
    expect("an output that nobody reads", serve.end()[0], 3)
    os.close(out)
    os.close(reader)


def refused():
    return output(ICEHOST, "serve", "unix:door", "--timeout", "0.2")


def check_door():
    """serve replaces a socket only if its server has ended, and removes only its own socket."""
    in_use = "icehost: unix:door: cannot listen: Address already in use\n"
    for name, kind, backlog, clients in [
        ("does not listen yet", socket.SOCK_STREAM, None, 0),
        ("listens", socket.SOCK_STREAM, 5, 0),
        ("has a full queue", socket.SOCK_STREAM, 0, 1),
        ("accepts datagrams", socket.SOCK_DGRAM, None, 0),
    ]:
        with socket.socket(socket.AF_UNIX, kind) as owner, socket.socket(socket.AF_UNIX) as client:
            owner.bind("door")
            if backlog is not None:
                owner.listen(backlog)
                owner.setblocking(False)
            if clients:
                client.connect("door")
            expect(name, refused(), in_use)
            admitted = 0
            try:
                while backlog is not None and owner.accept():
                    admitted += 1
            except BlockingIOError:
                pass
            expect(f"clients of a server that {name}", admitted, clients)
        # The owner has ended now.
        serve = Serve(endpoint="unix:door")
        os.remove("door")
        other = Serve(endpoint="unix:door")
        expect("ends", serve.end(), (0, ""))
        expect("the socket of another server", refused(), in_use)
        expect("ends", other.end(), (0, ""))
        expect("its own socket", os.path.exists("door"), False)
    write("door", "a file\n")
    expect("a file", (refused(), read("door")), (in_use, "a file\n"))
    os.remove("door")
    folder = os.open(".", os.O_RDONLY)
    fcntl.flock(folder, fcntl.LOCK_EX)
    expect("a locked folder", refused(),
           "icehost: unix:door: cannot listen: Device or resource busy\n")
    os.close(folder)


def check_race():
    """If several servers start at once on the same socket, only one of them serves."""
    for _ in range(40):
        with socket.socket(socket.AF_UNIX) as ended:
            ended.bind("door")
        servers = [start(ICEHOST, "serve", "unix:door", stderr=subprocess.PIPE) for _ in range(8)]
        said = [server.stderr.readline().decode() for server in servers]
        expect("servers", sum("serving" in line for line in said), 1)
        expect("others", sum("Address already in use" in line for line in said), 7)
        for server in servers:
            server.terminate()
            server.wait()


def check_flood():
    """Whatever a client sends, memory does not grow, and serve answers every R."""
    upstream = Serve()
    behind = f"remote-bitbang:127.0.0.1:{upstream.port}"
    floods = [os.urandom(1 << 20).replace(b"Q", b"q"), b"R" * (1 << 19), b"04" * (1 << 19),
              RESET + b"04" + TO_SHIFT_DR + b"04" * (1 << 19), b"ru" * (1 << 17)]
    for probe in ([], ["--probe", behind]):
        serve = Serve("--trace=/dev/null", "--json=/dev/null", "--vcd=/dev/null", *probe)
        for flood in floods:
            client = serve.client()
            sender = threading.Thread(target=client.sendall, args=(flood,), daemon=True)
            sender.start()
            wanted = flood.count(b"R")
            while wanted > 0 and (got := client.recv(1 << 16)):
                expect("answers", set(got) <= set(b"01"), True)
                wanted -= len(got)
            sender.join()
            expect("answers", wanted, 0)
            expect("the end of a flood", len(ask(client, b"R")), 1)
            client.close()
        peak = int(re.search(r"VmHWM:\s*(\d+)", read(f"/proc/{serve.process.pid}/status"))[1])
        # A sanitizer keeps freed memory.
        expect(f"{peak} KiB", peak < 32768 or "sanitize" in ICEHOST, True)
        expect("flooded", serve.end()[0], 0)
    expect("the upstream server", upstream.end()[0], 0)


run_checks(check_passing_on, check_loss_between_scripts, check_recording, check_xvc, check_next,
           check_lost, check_signal, check_good_bye, check_cut_outputs, check_door, check_race,
           check_flood)
