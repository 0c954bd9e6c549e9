// icehost as a user runs it: command line, exit status, output.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string_view>

#include "host/system/text.h"
#include "tests/icehost/run_icehost.h"

namespace {

// The commands of tests/golden/commands.txt against the golden files; with ICESCRIPT_UPDATE_GOLDEN
// set these are written instead.
TEST(Icehost, RunsAsGolden) {
  const std::string folder = ICESCRIPT_SOURCE "/tests/golden/";
  const bool update = std::getenv("ICESCRIPT_UPDATE_GOLDEN") != nullptr;
  std::ifstream rows(folder + "commands.txt");
  ASSERT_TRUE(rows.is_open());
  for (std::string row; std::getline(rows, row);) {
    if (row[0] == '#') continue;
    std::istringstream fields(row);
    int status = 0;
    std::string name, command;
    std::getline(fields >> status >> name, command);
    const Outcome outcome = RunShell(command);
    EXPECT_EQ(outcome.status, status) << command;
    const std::string path = folder + name + ".txt";
    if (update) std::ofstream(path) << outcome.output;
    std::ostringstream golden;
    golden << std::ifstream(path).rdbuf();
    EXPECT_EQ(outcome.output, golden.str()) << command;
  }
}

// Each line that cannot be taken ends with 2 and says why.
TEST(Icehost, RefusesACommandLine) {
  const struct {
    const char* arguments;
    const char* message;
  } kRefused[] = {
      {"", "a verb is required: run, check, detect, import, serve"},
      {"chek x", "unknown verb \"chek\" (did you mean check?)"},
      {"help chek", "unknown verb \"chek\" (did you mean check?)"},
      {"-q xyz --help", "unknown verb \"xyz\""},
      {"run --trase", "unknown option \"--trase\" (did you mean --trace?)"},
      {"check --stric=1 x", "unknown option \"--stric\" (did you mean --strict?)"},
      {"--quite", "unknown option \"--quite\" (did you mean --quiet?)"},
      {"--trace run x", "option \"--trace\" stands behind the verb"},
      {"run x --version", "option \"--version\" stands before the verb"},
      {"serve tcp:1 2", "The following argument was not expected: 2"},
      {"run", "SCRIPT is required"},
      {"run --idcode 2 x", "--idcode: bit 0 of an IDCODE is 1"},
      {"run --register 3 x", "--register: expected IR:BITS or IR:BITS=HEX"},
      {"run --register 9:32=3b9zz x", "--register: \"3b9zz\" is no hexadecimal number"},
      {"run --idcode-instruction 20 x",
       "--idcode-instruction: instruction 0x20 does not fit an IR of 5 bits"},
      {"run --register 3:8=100 x", "--register: 0x100 does not fit 8 bits"},
      {"run --register 3:5000 x", "--register: \"5000\" is no number from 0 to 4096"},
      {"run --register 1g:8 x", "--register: \"1g\" is no hexadecimal number up to 0xffffffff"},
      {"run --register 0x40:8 x", "--register: instruction 0x40 does not fit an IR of 5 bits"},
      {"serve --register 10:8 --ir-length 4 tcp:0",
       "--register: instruction 0x10 does not fit an IR of 4 bits"},
      {"run --ir-length 1 x", "--ir-length: Value 1 not in range 2 to 32"},
      {"run --ir-length 33 x", "--ir-length: Value 33 not in range 2 to 32"},
      {"detect --script ini", "--script: expected jtag or gpio"},
      {"detect --script gpio --probe openocd:h:1", "--script: GPIO scripts do not run on OpenOCD"},
      {"serve udp:1", "ENDPOINT: expected tcp:PORT, tcp:ADDRESS:PORT or unix:PATH"},
      {"run --register \"3:$(printf '\\033[1m')\" x",
       "--register: \" [1m\" is no number from 0 to 4096"},
      {"run --timeout nan x", "--timeout: expected seconds, more than 0 and up to 86400"},
      {"run --probe openocd:h:1:t --idcode 1 x", "--idcode: is for the simulated probe"},
      {"serve tcp:0 --probe openocd:h:1",
       "--probe: OpenOCD takes whole scans, and a client of serve sets single pins"},
      {"serve tcp:0 --probe remote-bitbang:h:1 --idcode 1", "--idcode: is for the simulated probe"},
      {"serve -q tcp:0 -v", "--verbose: is against --quiet"},
      {"serve tcp:0 --trace=- --vcd -", "--vcd: - is also the file of --trace"},
      {"serve tcp:0 --json /nowhere/x --vcd /nowhere/x",
       "--vcd: /nowhere/x is also the file of --json"},
      {"run --probe openocd:h x", "--probe: expected HOST:PORT or unix:PATH, not \"h\""},
      {"run --probe openocd: x", "--probe: expected HOST:PORT or unix:PATH, not \"\""},
      {"run --wire 7 x", "--wire: expected jtag5, 2wire or cjtag2"},
      {"serve tcp:65536", "ENDPOINT: \"65536\" is no port from 0 to 65535"},
      {"run --svg examples/reset.ini examples/reset.ini",
       "--svg: examples/reset.ini is also a script"},
      {"run --json tests/../examples/reset.ini - <examples/reset.ini",
       "--json: tests/../examples/reset.ini is also a script"},
      {"run --vcd " ICESCRIPT_MODULE " --plugin " ICESCRIPT_MODULE " examples/reset.ini",
       "--vcd: " ICESCRIPT_MODULE " is also the plug-in"},
      {"run --trace=/nowhere/x --svg /nowhere/../nowhere/x examples/reset.ini",
       "--svg: /nowhere/../nowhere/x is also the file of --trace"},
      {"run --html examples/../examples/reset.ini examples/reset.ini",
       "--html: examples/../examples/reset.ini is also a script"},
      {"run --json - --trace --svg - x", "--svg: - is also the file of --json"},
      {"check --json examples/reset.ini examples/../examples/reset.ini",
       "--json: examples/reset.ini is also a script"},
  };
  for (const auto& refused : kRefused) {
    const Outcome outcome = RunIcehost(refused.arguments + std::string(" 2>&1 >/dev/null"));
    EXPECT_EQ(outcome.status, 2) << refused.arguments;
    EXPECT_EQ(outcome.output,
              refused.message + std::string("\nRun with --help for more information.\n"));
  }
}

// Each fault ends with its status and one line that names what and why.
TEST(Icehost, SaysWhatIsWrong) {
  const struct {
    const char* arguments;
    int status;
    const char* message;
  } kFaults[] = {
      {"detect --probe remote-bitbang:unix:/nowhere/x", 3,
       "icehost: unix:/nowhere/x: cannot connect: No such file or directory\n"},
      {"detect --idcode ff", 1,
       "icehost: TAP 1: 0x000000ff is no valid IDCODE (no manufacturer may have code 0x7f)\n"},
      {"serve tcp:0 --json /nowhere/x", 3, "icehost: /nowhere/x: No such file or directory\n"},
      {"serve tcp:0 --probe remote-bitbang:unix:/nowhere", 3,
       "icehost: unix:/nowhere: cannot connect: No such file or directory\n"},
      {"serve unix:/nowhere/x", 3,
       "icehost: unix:/nowhere/x: cannot listen: No such file or directory\n"},
      {"run --plugin /dev/null examples/reset.ini", 3,
       "icehost: cannot load the plug-in: /dev/null: file too short\n"},
      {"run --plugin libm.so.6 examples/reset.ini", 3,
       "icehost: cannot load the plug-in: libm.so.6: exports no ImplementScr\n"},
      {"run --plugin " ICESCRIPT_THROWING_PLUGIN " examples/reset.ini", 1,
       "icehost: examples/reset.ini: the plug-in threw an exception: out of sorts\n"},
      {"run --plugin " ICESCRIPT_IDLE_PLUGIN " examples/scratch_register.ini", 1,
       "icehost: examples/scratch_register.ini failed: not read: 2 of the values expected\n"},
      {"run --json /nowhere/x examples/reset.ini", 3,
       "icehost: /nowhere/x: No such file or directory\n"},
      {"run --vcd /dev/full examples/reset.ini", 3,
       "icehost: /dev/full: cannot write: No space left on device\n"},
      {"run --probe remote-bitbang:unix:/nowhere examples/reset.ini", 3,
       "icehost: unix:/nowhere: cannot connect: No such file or directory\n"},
      {"run --probe openocd:[::1]:1:t --svg x examples/reset.ini", 3,
       "icehost: OpenOCD shows no pins: no waveform of it\n"},
      {"serve unix:examples/reset.ini", 3,
       "icehost: unix:examples/reset.ini: cannot listen: Address already in use\n"},
      {"check --json /dev/full examples/reset.ini", 3,
       "icehost: /dev/full: cannot write: No space left on device\n"},
      {"run --size-limit 1 - </dev/zero", 1,
       "icehost: -: is larger than 1 MiB; --size-limit lets more in\n"},
      {"check --size-limit 1 /dev/zero", 1,
       "icehost: /dev/zero: is larger than 1 MiB; --size-limit lets more in\n"},
      {"run 2>&1 >/dev/full examples/reset.ini", 3,
       "icehost: standard output: No space left on device\n"},
      {"check 2>&1 >/dev/full tests/scripts/bad.ini /nowhere", 3,
       "icehost: standard output: No space left on device\n"},
      {"run /nowhere", 1, "icehost: /nowhere: No such file or directory\n"},
      {"check /tmp", 1, "icehost: /tmp: is a directory\n"},
      {"check " ICESCRIPT_MODULE, 1, "icehost: " ICESCRIPT_MODULE ": is binary, not a script\n"},
      {"check tests/scripts/noise.bin", 1,
       "icehost: tests/scripts/noise.bin: is binary, not a script\n"},
      {"check /nowhere/$(printf '\\033x')", 1, "icehost: /nowhere/ x: No such file or directory\n"},
      {"run -q --force - < tests/golden/empty.txt", 1,
       "<stdin>:1:1: error: Syntax error, no end found (the script is empty)\n\n^\n"
       "icehost: - failed: Syntax error, no end found\n"},
  };
  for (const auto& fault : kFaults) {
    const std::string arguments = fault.arguments;
    const bool redirected = arguments.find(">/dev/full") != std::string::npos;
    const Outcome outcome = RunIcehost(arguments + (redirected ? "" : " 2>&1 >/dev/null"));
    EXPECT_EQ(outcome.status, fault.status) << fault.arguments;
    EXPECT_EQ(outcome.output, fault.message) << fault.arguments;
  }
}

// Nothing that a terminal obeys passes, and each character keeps its column.
TEST(Icehost, PrintsNoControls) {
  const struct {
    std::string_view text;
    const char* printable;
  } kTexts[] = {
      {std::string_view("a\0b\t\x1b[2J\x7f\r~", 11), "a b\t [2J  ~"},
      {"\xc3\xa9\xe2\x82\xac\xf0\x9f\x94\xa7", "\xc3\xa9\xe2\x82\xac\xf0\x9f\x94\xa7"},
      {"\xc2\x80\xc2\x9b\xc2\x9f\xc2\xa0", "   \xc2\xa0"},  // C1, a no-break space
      {"\x80\x9b\xbf\xc3(\xc3",
       "???"
       "?(?"},                                                           // stray, cut short
      {"\xc0\x9b\xe0\x82\x9b\xf0\x80\x82\x9b", "?????????"},             // overlong
      {"\xed\xa0\x80\xf4\x90\x80\x80\xff", "????????"},                  // beyond Unicode
      {"\xef\xbf\xbf\xf4\x8f\xbf\xbf", "\xef\xbf\xbf\xf4\x8f\xbf\xbf"},  // its ends
      {"\xe2\x80\xa7\xe2\x80\xa8\xe2\x80\xae\xe2\x80\xac\xe2\x80\xaf",
       "\xe2\x80\xa7   \xe2\x80\xaf"},
      {"\xe2\x81\xa5\xe2\x81\xa6\xe2\x81\xa9\xe2\x81\xaa", "\xe2\x81\xa5  \xe2\x81\xaa"},
  };
  for (const auto& text : kTexts) EXPECT_EQ(icehost::Printable(text.text), text.printable);
}

TEST(Icehost, ChecksInColourOnATerminal) {
  const std::string message =
      " Syntax error: no start found. (the line below the section tag is START, "
      "alone)\r\nBEGIN\r\n";
  const std::string place = "tests/scripts/no_start.gpio:3:1: ";
  const std::string count = "1 error in 1 file\r\n";
  const struct {
    const char* surroundings;
    std::string output;
  } kChecks[] = {
      {"NO_COLOR= TERM=xterm",
       place + "\x1b[1m\x1b[31merror:\x1b[0m" + message + "\x1b[1m\x1b[32m^\x1b[0m\r\n" + count},
      {"NO_COLOR=1 TERM=xterm", place + "error:" + message + "^\r\n" + count},
      {"NO_COLOR= TERM=dumb", place + "error:" + message + "^\r\n" + count},
  };
  for (const auto& check : kChecks) {
    const std::string command =
        " script -qec 'icehost check tests/scripts/no_start.gpio 2>/dev/null' /dev/null";
    EXPECT_EQ(RunShell(check.surroundings + command).output, check.output);
  }
}

}  // namespace
