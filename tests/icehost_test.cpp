// icehost as a user runs it: command line, exit status, output.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "tests/run_icehost.h"

namespace {

// Output against golden files; with ICESCRIPT_UPDATE_GOLDEN set they are written anew instead.
TEST(Icehost, RunsAsGolden) {
  const struct {
    const char* arguments;
    int status;
    const char* golden;
  } kRuns[] = {
      {"run examples/read_idcode.ini", 0, "read_idcode.ini"},
      {"run examples/scratch_register.ini", 0, "scratch_register.ini"},
      {"run examples/two_wire.ini", 0, "two_wire.ini"},
      {"run examples/reset.ini", 0, "reset.ini"},
      {"run examples/read_idcode.gpio", 0, "read_idcode.gpio"},
      {"run - < examples/reset_pulse.gpio", 0, "reset_pulse.gpio"},
      {"run examples/read_idcode.gpio examples/two_wire.ini examples/read_idcode.ini", 0,
       "several"},
      {"run tests/scripts/long_scans.ini --register 0x15:8=5a --ir-length 6 --idcode 5 --wire "
       "2wire",
       0, "long_scans"},
      {"run tests/scripts/bad.ini examples/reset.ini 2>&1", 1, "run_bad"},
      {"run --trace examples/read_idcode.gpio examples/two_wire.ini 2>&1 >/dev/null", 0, "trace"},
      {"run --json /dev/stderr examples/reset_pulse.gpio examples/reset.ini 2>&1 >/dev/null", 0,
       "json"},
      {"run --json /dev/stderr tests/scripts/bad.ini 2>&1 >/dev/null | grep -v ^icehost", 0,
       "json_errors"},
      {"run --vcd /dev/stderr examples/read_idcode.ini examples/reset_pulse.gpio 2>&1 >/dev/null",
       0, "vcd"},
      {"run --svg /dev/stderr examples/read_idcode.ini 2>&1 >/dev/null", 0, "svg"},
      {"check tests/scripts/bad.ini 2>&1", 1, "check_ini"},
      {"check tests/scripts/bad.gpio 2>&1", 1, "check_gpio"},
      {"check tests/scripts/traps.gpio tests/scripts/traps.ini 2>&1", 1, "check_traps"},
      {"check -q tests/scripts/bad.gpio tests/scripts/no_start.gpio - <tests/scripts/no_end.gpio "
       "2>&1",
       1, "check_errors_only"},
      {"check examples/* tests/scripts/long_scans.ini 2>&1", 0, "check_examples"},
  };
  const bool update = std::getenv("ICESCRIPT_UPDATE_GOLDEN") != nullptr;
  for (const auto& run : kRuns) {
    const Outcome outcome = RunIcehost(run.arguments);
    EXPECT_EQ(outcome.status, run.status) << run.arguments;
    const std::string path = ICESCRIPT_SOURCE "/tests/golden/" + std::string(run.golden) + ".txt";
    if (update) std::ofstream(path) << outcome.output;
    std::stringstream golden;
    golden << std::ifstream(path).rdbuf();
    EXPECT_EQ(outcome.output, golden.str()) << run.arguments;
  }
}

// Each fault ends with its status and one line that names what and why.
TEST(Icehost, SaysWhatIsWrong) {
  const std::string help = "\nRun with --help for more information.\n";
  const struct {
    const char* arguments;
    int status;
    std::string message;
  } kFaults[] = {
      {"", 2, "A subcommand is required" + help},
      {"run", 2, "SCRIPT is required" + help},
      {"run --idcode 2 x", 2, "--idcode: bit 0 of an IDCODE is 1" + help},
      {"run --register 3 x", 2, "--register: expected IR:BITS or IR:BITS=HEX" + help},
      {"run --register 3:8=100 x", 2, "--register: 0x100 does not fit 8 bits" + help},
      {"run --register 3:5000 x", 2, "--register: \"5000\" is no number from 0 to 4096" + help},
      {"run --timeout nan x", 2, "--timeout: expected seconds, more than 0 and up to 86400" + help},
      {"run --probe openocd:h:1:t --idcode 1 x", 2, "--idcode: is for the simulated probe" + help},
      {"run --probe openocd:h x", 2, "--probe: expected HOST:PORT or unix:PATH, not \"h\"" + help},
      {"run --probe openocd: x", 2, "--probe: expected HOST:PORT or unix:PATH, not \"\"" + help},
      {"run --wire 7 x", 2, "--wire: expected jtag5, 2wire or cjtag2" + help},
      {"serve tcp:65536", 2, "ENDPOINT: \"65536\" is no port from 0 to 65535" + help},
      {"serve unix:/nowhere/x", 3,
       "icehost: unix:/nowhere/x: cannot listen: No such file or directory\n"},
      {"run --plugin /dev/null x", 3,
       "icehost: cannot load the plug-in: /dev/null: file too short\n"},
      {"run --plugin libm.so.6 x", 3,
       "icehost: cannot load the plug-in: libm.so.6: exports no ImplementScr\n"},
      {"run --plugin " ICESCRIPT_THROWING_PLUGIN " examples/reset.ini", 1,
       "icehost: examples/reset.ini: the plug-in threw an exception: out of sorts\n"},
      {"run --json /nowhere/x x", 3, "icehost: /nowhere/x: No such file or directory\n"},
      {"run --vcd /dev/full examples/reset.ini", 3,
       "icehost: /dev/full: cannot write: No space left on device\n"},
      {"run --probe remote-bitbang:unix:/nowhere x", 3,
       "icehost: unix:/nowhere: cannot connect: No such file or directory\n"},
      {"run --probe openocd:[::1]:1:t --svg x x", 3,
       "icehost: OpenOCD shows no pins: no waveform of it\n"},
      {"serve unix:examples/reset.ini", 3,
       "icehost: unix:examples/reset.ini: cannot listen: Address already in use\n"},
      {"run --svg examples/reset.ini examples/reset.ini", 3,
       "icehost: examples/reset.ini: is a script to run, and would be overwritten\n"},
      {"run 2>&1 >/dev/full examples/reset.ini", 3,
       "icehost: standard output: No space left on device\n"},
      {"run /nowhere", 1, "icehost: /nowhere: No such file or directory\n"},
      {"check /tmp", 1, "icehost: /tmp: is a directory\n"},
      {"check " ICESCRIPT_ICEHOST, 1, "icehost: " ICESCRIPT_ICEHOST ": is binary, not a script\n"},
      {"run -q - < tests/golden/empty.txt", 1, "icehost: - failed: Syntax error, no end found\n"},
  };
  for (const auto& fault : kFaults) {
    const std::string arguments = fault.arguments;
    const bool redirected = arguments.find(">/dev/full") != std::string::npos;
    const Outcome outcome = RunIcehost(arguments + (redirected ? "" : " 2>&1 >/dev/null"));
    EXPECT_EQ(outcome.status, fault.status) << fault.arguments;
    EXPECT_EQ(outcome.output, fault.message) << fault.arguments;
  }
}

}  // namespace
