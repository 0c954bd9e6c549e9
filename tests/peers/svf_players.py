#!/usr/bin/python3 -B
"""OpenOCD plays an SVF file, and icehost runs the script imported from it, with the same effect."""
import subprocess
import sys

sys.path.append(sys.path[0] + "/..")
from lib import Serve, expect, output, run_checks, waveform, write

STABLE = ["RESET", "IDLE", "DRPAUSE", "IRPAUSE"]
# The mark at the beginning of each part of a file. No part shifts these bits.
MARK = "ENDIR IDLE; ENDDR IDLE; HIR 0; TIR 0; HDR 0; TDR 0; STATE IDLE; SDR 13 TDI (1555);"
PARTS = {
    **{f"from {here} to {there}": f"STATE {here}; STATE {there};"
       for here in STABLE for there in STABLE},
    **{f"waits in {here} to {there}": f"RUNTEST {here} 3 TCK ENDSTATE {there}; RUNTEST 70 TCK;"
       for here in STABLE for there in STABLE},
    **{f"scans to {there}": f"ENDIR {there}; ENDDR {there}; SIR 5 TDI (0d); SIR 5 TDI (02);"
                            "SDR 6 TDI (2c); SDR 3 TDI (4); SIR 5 TDI (1f);"
       for there in STABLE[1:]},  # OpenOCD exits after a scan that ends in RESET
    "paths": "STATE DRSELECT IRSELECT IRCAPTURE IREXIT1 IRPAUSE IREXIT2 IRUPDATE IDLE;"
             "STATE DRSELECT DRCAPTURE DRSHIFT DRSHIFT DRSHIFT DREXIT1 DRPAUSE DRPAUSE;"
             "state drexit2 drshift drexit1 drupdate drselect drcapture drexit1 drpause;"
             "STATE DREXIT2 DRUPDATE IDLE IDLE;",
    "headers": "HIR 2 TDI (1); TIR 3 TDI (6); HDR 1 TDI (1); TDR 2 TDI (0);"
               "SIR 5 TDI (15); SDR 9 TDI (155); HDR 0; SDR 9;",
    "a long scan": f"SIR 5 TDI (02); SDR 1000 TDI ({0xF00F_5A00 << 900:x}); SDR 1000;",
    "TRST": "TRST ON; TRST OFF; SDR 32 TDI (0) TDO (1ce51001);",
    "values": "SIR 5 TDI (02) TDO (01) MASK (1f); SDR 32 TDI (12345678);\n"
              "SDR 32 TDI (0) TDO (ff3f5678) MASK (00f0 ! a comment\n0fff);\tsdr 32;",
}
TARGET = "jtag newtap sim tap -irlen 5; gdb_port disabled; telnet_port disabled; tcl_port disabled"


def played(vcd):
    """Returns a list for each mark: the TAP states, shifted bits and levels of TRST after it."""
    levels, states = waveform(vcd)
    parts, edges, scan = [], [], ""
    for i in range(1, len(states)):
        if levels["TRST"][i] != levels["TRST"][i - 1]:
            edges.append("TRST=" + levels["TRST"][i])
        if levels["TCK"][i - 1:i + 1] != "01":
            continue
        if states[i - 1].startswith("Shift"):
            edges.append(levels["TDI"][i])
            scan += edges[-1]
        if scan and states[i].startswith("Update"):
            if scan == "1010101010101":
                edges = []
                parts.append(edges)
            scan = ""
        # Players may differ in the number of edges for a reset.
        if (states[i - 1], states[i]) != ("Test-Logic-Reset",) * 2:
            edges.append(states[i])
    return parts


def write_svf(text):
    """Writes one statement per line, because OpenOCD reads only the first statement of a line."""
    write("all.svf", text.replace(";", ";\n"))


def serve_to(play):
    """Returns the status of a player, and the parts that it played on a server."""
    server = Serve("--vcd=played.vcd")
    status = play(server.port)
    server.end()
    return status, played("played.vcd")


def openocd(port):
    words = ["adapter driver remote_bitbang", "remote_bitbang host 127.0.0.1",
             f"remote_bitbang port {port}", "transport select jtag", "reset_config trst_only",
             TARGET, "init", "svf all.svf", "exit"]
    command = [word for one in words for word in ("-c", one)]
    return subprocess.run(["openocd", *command], capture_output=True, timeout=60,
                          check=False).returncode


def icehost(port):
    said = output("icehost", "import", "--script", "gpio", "all.svf", "-o", "all.gpio")
    said += output("icehost", "check", "--strict", "all.gpio")
    expect("messages about the file and its script", said, "")
    command = ["icehost", "run", "-q", "--probe", f"remote-bitbang:127.0.0.1:{port}", "all.gpio"]
    return subprocess.run(command, capture_output=True, timeout=60, check=False).returncode


def check_same():
    write_svf("".join(MARK + part for part in PARTS.values()))
    wanted, got = serve_to(openocd), serve_to(icehost)
    expect("statuses", (wanted[0], got[0]), (0, 0))
    expect("parts", (len(wanted[1]), len(got[1])), (len(PARTS), len(PARTS)))
    for name, theirs, ours in zip(PARTS, wanted[1], got[1]):
        expect(name, ours, theirs)


def check_changed():
    """A wrong bit of TDO makes both players fail, unless the mask excludes it."""
    for tdo, status in (("1ce51001", 0), ("0ce51001", 0), ("1ce51003", 1), ("1c651001", 1)):
        write_svf(f"STATE RESET; SDR 32 TDI (0) TDO ({tdo}) MASK (0fffffff);")
        expect(tdo, (serve_to(openocd)[0], serve_to(icehost)[0]), (status, status))


run_checks(check_same, check_changed)
