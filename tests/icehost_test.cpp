// icehost as a user runs it: command line, exit status, output.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string_view>

#include "host/system/text.h"
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
      {"run --force tests/scripts/bad.ini examples/reset.ini 2>/dev/null", 1, "run_forced"},
      {"run --trace --summary examples/read_idcode.gpio examples/two_wire.ini "
       "tests/scripts/walk.gpio tests/scripts/long_scans.ini 2>&1 >/dev/null | sed 's/[0-9.]* s$/T "
       "s/'",
       0, "trace"},
      {"run -q --svg /dev/stderr examples/reset.ini tests/scripts/walk.gpio 2>&1 >/dev/null", 0,
       "svg_walk"},
      {"run --probe sim --ir-length 32 --wire cjtag2 --register 0x5a5a55aa:8 "
       "tests/scripts/register.ini",
       0, "register"},
      {"run --ir-length 2 --register 0:5=0x1F - "
       "<<END\n[A]\nIR=2,0\nDR=R,5,0\n[B]\nIR=2,3\nDR=R,2,2\nEND",
       0, "bounds"},
      {"run --json - examples/reset_pulse.gpio examples/reset.ini 2>&1", 0, "json"},
      {"run --force --json - tests/scripts/bad.ini 2>/dev/null", 1, "json_errors"},
      {"run --trace=- -q examples/two_wire.ini 2>&1", 0, "trace_standard_output"},
      {"run --vcd /dev/stderr examples/read_idcode.ini examples/reset_pulse.gpio 2>&1 >/dev/null",
       0, "vcd"},
      {"run --svg - examples/read_idcode.ini | diff - docs/read_idcode.svg", 0, "empty"},
      {"check tests/scripts/bad.ini", 1, "check_ini"},
      {"check tests/scripts/bad.gpio", 1, "check_gpio"},
      {"check tests/scripts/traps.gpio tests/scripts/traps.ini", 1, "check_traps"},
      {"check -q tests/scripts/bad.gpio tests/scripts/no_start.gpio - <tests/scripts/no_end.gpio",
       1, "check_errors_only"},
      {"--help; for verb in run check detect import serve; do " ICESCRIPT_ICEHOST
       " $verb --help; done",
       0, "help"},
      {"help; for verb in run check detect import serve; do " ICESCRIPT_ICEHOST
       " -q help $verb; done",
       0, "help"},
      {"check - <<END\n[ZEVAA_ICE_GPPIO]\nA=1\nEND", 1, "check_near_tag"},
      {"check tests/golden/empty.txt tests/scripts/marked.gpio tests/scripts/near.gpio", 1,
       "check_heads"},
      {"check tests/scripts/nested.gpio tests/scripts/cut.gpio tests/scripts/cut.ini", 1,
       "check_blocks_cut"},
      {"check - <<END\n[ZEVA_ICE_GPIO]\nSTART\nREPT=2\nPRINT=GPIO_IN\nENDR,\nP\nEND", 1,
       "check_unfinished"},
      {"check tests/scripts/slips.gpio tests/scripts/slips.ini 2>&1", 1, "check_slips"},
      {"check tests/scripts/pins.gpio 2>&1", 0, "check_pins"},
      {"--version >/dev/null; for head in [orvex_ice_gpio] [ZEVA_ICE_GPIO '[ORVEX_ICE_GPIO]\\t' '[ "
       "ZEVA_ICE_GPIO ]' '[ZEVA_ICE_GPIO] START' '[VEZA_ICE_GPIO] ; x' "
       "'\\0357\\0273\\0277[CONTROL]' "
       "'\\0357\\0273\\0277IR=5,1' '[CONTROL]\\nRESET=' '[ZEVA_ICE_GPIO]\\nSTART ; x' "
       "'[GPIO]\\nStart'; do printf "
       "'%b\\n' \"$head\" | " ICESCRIPT_ICEHOST " check - 2>&1 | grep :; done",
       0, "check_first_lines"},
      {"--version >/dev/null; printf '[CONTROL]\nCDI=2\n[A]\nIR=256,0 # expect 0\nDR=W,257\n[B]\n"
       "IR=257,0 # expect 9\nDR=W,256 # expect 0 bits\n[C]\nIR=5,1 # expect :5\nDR=R,8 # expect\n'"
       " | " ICESCRIPT_ICEHOST " check - 2>&1",
       1, "check_wires"},
      // The IDCODE is there again after zeros were shifted in.
      {"--version >/dev/null; printf '[A]\nIR=5,2\nDR=R,32\nTDO=1,0x10,0xe5,0x1c\n[B]\nIR=5,2\n"
       "DR=R,32\nTDO=1,0x10,0xe5,0x1c\n' | " ICESCRIPT_ICEHOST
       " run -q --idcode-instruction 2 --register 5:8 - 2>&1",
       0, "empty"},
      {"check examples/*.gpio examples/*.ini tests/scripts/long_scans.ini", 0, "check_examples"},
      {"check -q examples/*.gpio examples/*.ini tests/scripts/long_scans.ini 2>&1", 0, "empty"},
      {"check -q --strict examples/reset.ini /nowhere tests/scripts/long_scans.ini", 1,
       "check_strict"},
      {"detect --ir-length 9 --script jtag 2>&1", 0, "detect"},
      {"check --json - tests/scripts/bad.gpio /nowhere examples/reset.ini", 1, "check_json"},
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
      {"", 2, "a verb is required: run, check, detect, import, serve" + help},
      {"chek x", 2, "unknown verb \"chek\" (did you mean check?)" + help},
      {"help chek", 2, "unknown verb \"chek\" (did you mean check?)" + help},
      {"-q xyz --help", 2, "unknown verb \"xyz\"" + help},
      {"run --trase", 2, "unknown option \"--trase\" (did you mean --trace?)" + help},
      {"check --stric=1 x", 2, "unknown option \"--stric\" (did you mean --strict?)" + help},
      {"--quite", 2, "unknown option \"--quite\" (did you mean --quiet?)" + help},
      {"--trace run x", 2, "option \"--trace\" stands behind the verb" + help},
      {"run x --version", 2, "option \"--version\" stands before the verb" + help},
      {"serve tcp:1 2", 2, "The following argument was not expected: 2" + help},
      {"run", 2, "SCRIPT is required" + help},
      {"run --idcode 2 x", 2, "--idcode: bit 0 of an IDCODE is 1" + help},
      {"run --register 3 x", 2, "--register: expected IR:BITS or IR:BITS=HEX" + help},
      {"run --register 9:32=3b9zz x", 2, "--register: \"3b9zz\" is no hexadecimal number" + help},
      {"run --idcode-instruction 20 x", 2,
       "--idcode-instruction: instruction 0x20 does not fit an IR of 5 bits" + help},
      {"run --register 3:8=100 x", 2, "--register: 0x100 does not fit 8 bits" + help},
      {"run --register 3:5000 x", 2, "--register: \"5000\" is no number from 0 to 4096" + help},
      {"run --register 1g:8 x", 2,
       "--register: \"1g\" is no hexadecimal number up to 0xffffffff" + help},
      {"run --register 0x40:8 x", 2,
       "--register: instruction 0x40 does not fit an IR of 5 bits" + help},
      {"serve --register 10:8 --ir-length 4 tcp:0", 2,
       "--register: instruction 0x10 does not fit an IR of 4 bits" + help},
      {"run --ir-length 1 x", 2, "--ir-length: Value 1 not in range 2 to 32" + help},
      {"run --ir-length 33 x", 2, "--ir-length: Value 33 not in range 2 to 32" + help},
      {"detect --script ini", 2, "--script: expected jtag or gpio" + help},
      {"detect --script gpio --probe openocd:h:1", 2,
       "--script: GPIO scripts do not run on OpenOCD" + help},
      {"detect --probe remote-bitbang:unix:/nowhere/x", 3,
       "icehost: unix:/nowhere/x: cannot connect: No such file or directory\n"},
      {"detect --idcode ff", 1,
       "icehost: TAP 1: 0x000000ff is no valid IDCODE (no manufacturer may have code 0x7f)\n"},
      {"serve udp:1", 2, "ENDPOINT: expected tcp:PORT, tcp:ADDRESS:PORT or unix:PATH" + help},
      {"run --register \"3:$(printf '\\033[1m')\" x", 2,
       "--register: \" [1m\" is no number from 0 to 4096" + help},
      {"run --timeout nan x", 2, "--timeout: expected seconds, more than 0 and up to 86400" + help},
      {"run --probe openocd:h:1:t --idcode 1 x", 2, "--idcode: is for the simulated probe" + help},
      {"serve tcp:0 --probe openocd:h:1", 2,
       "--probe: OpenOCD takes whole scans, and a client of serve sets single pins" + help},
      {"serve tcp:0 --probe remote-bitbang:h:1 --idcode 1", 2,
       "--idcode: is for the simulated probe" + help},
      {"serve -q tcp:0 -v", 2, "--verbose: is against --quiet" + help},
      {"serve tcp:0 --trace=- --vcd -", 2, "--vcd: - is also the file of --trace" + help},
      {"serve tcp:0 --json /nowhere/x --vcd /nowhere/x", 2,
       "--vcd: /nowhere/x is also the file of --json" + help},
      {"serve tcp:0 --json /nowhere/x", 3, "icehost: /nowhere/x: No such file or directory\n"},
      {"serve tcp:0 --probe remote-bitbang:unix:/nowhere", 3,
       "icehost: unix:/nowhere: cannot connect: No such file or directory\n"},
      {"run --probe openocd:h x", 2, "--probe: expected HOST:PORT or unix:PATH, not \"h\"" + help},
      {"run --probe openocd: x", 2, "--probe: expected HOST:PORT or unix:PATH, not \"\"" + help},
      {"run --wire 7 x", 2, "--wire: expected jtag5, 2wire or cjtag2" + help},
      {"serve tcp:65536", 2, "ENDPOINT: \"65536\" is no port from 0 to 65535" + help},
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
      {"run --svg examples/reset.ini examples/reset.ini", 2,
       "--svg: examples/reset.ini is also a script" + help},
      {"run --json tests/../examples/reset.ini - <examples/reset.ini", 2,
       "--json: tests/../examples/reset.ini is also a script" + help},
      {"run --vcd " ICESCRIPT_MODULE " --plugin " ICESCRIPT_MODULE " examples/reset.ini", 2,
       "--vcd: " ICESCRIPT_MODULE " is also the plug-in" + help},
      {"run --trace=/nowhere/x --svg /nowhere/../nowhere/x examples/reset.ini", 2,
       "--svg: /nowhere/../nowhere/x is also the file of --trace" + help},
      {"run --html examples/../examples/reset.ini examples/reset.ini", 2,
       "--html: examples/../examples/reset.ini is also a script" + help},
      {"run --json - --trace --svg - x", 2, "--svg: - is also the file of --json" + help},
      {"check --json examples/reset.ini examples/../examples/reset.ini", 2,
       "--json: examples/reset.ini is also a script" + help},
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
    const std::string arguments = std::string("--version >/dev/null; ") + check.surroundings +
                                  " script -qec '" ICESCRIPT_ICEHOST
                                  " check tests/scripts/no_start.gpio 2>/dev/null' /dev/null";
    EXPECT_EQ(RunIcehost(arguments).output, check.output);
  }
}

}  // namespace
