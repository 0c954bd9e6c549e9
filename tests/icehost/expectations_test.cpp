// What scripts expect to read, and what becomes of it.
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tests/icehost/run_icehost.h"

namespace {

std::string Gpio(const std::string& lines) {
  return "[ZEVA_ICE_GPIO]\nSTART\nGPIO_OE=1\n" + lines + "END\n";
}

std::string Idcode(const std::string& lines) {
  return "[ID]\nIR=5,1\nDR=R,32,0,0,0,0\n" + lines;
}

// 36 bytes.
const std::string kZeros = [] {
  std::string bytes = "0";
  while (bytes.size() < 71) bytes += ",0";
  return bytes;
}();

// On the simulated target: its IDCODE is 0x1ce51001, and pins that nobody drives are high.
TEST(Expectations, DecideHowARunEnds) {
  const std::string failed = "icehost: - failed\n";
  const struct {
    const char* options;
    std::string script;
    int status;
    std::string said;
  } kRuns[] = {
      {"", Idcode("TDO=01,10,e5,1c\nIR_TDO=1"), 0, ""},
      {"", Idcode("TDO=01, 10 ,0xE5,0X1c # ours\nMASK=ff,ff,ff,0f\nIR_TDO=0x1f\nIR_MASK=1"), 0, ""},
      {"", Idcode("TDO=01,10,e5,3c"), 1,
       "<stdin>:4:5: expected 0x3ce51001, captured 0x1ce51001\n" + failed},
      {"", Idcode("TDO=01,10,e5,3c\nMASK=ff,ff,ff,df"), 0, ""},
      {"", Idcode("MASK=ff,ff,ff,20\nTDO=01,10,e5,3c\n"), 1,
       "<stdin>:5:5: expected 0x3ce51001, captured 0x1ce51001 (mask 0x20ffffff)\n" + failed},
      {"--idcode 3", Idcode("IR_TDO=3\nTDO=3,0,0,0"), 1,
       "<stdin>:4:8: expected 0x03, captured 0x01\n" + failed},
      {"--keep-going", Idcode("IR_TDO=3\nTDO=3,0,0,0"), 1,
       "<stdin>:4:8: expected 0x03, captured 0x01\n"
       "<stdin>:5:5: expected 0x00000003, captured 0x1ce51001\n"
       "icehost: - failed: not as expected: 2 of the values read\n"},
      // Registers on the 2-wire interface carry a byte more than the script says.
      {"--wire 2wire", Idcode("TDO=01,10,e5,1c\nIR_TDO=1"), 0, ""},
      {"--wire 2wire", Idcode("TDO=01,10,e5,1d"), 1,
       "<stdin>:4:5: expected 0x1de51001, captured 0x1ce51001\n" + failed},
      // A value that was shifted out while another was written.
      {"", "[W]\nIR=5,2\nDR=W,5,1f\nTDO=0\n[R]\nIR=5,2\nDR=R,5,0\nTDO=1\n", 1,
       "<stdin>:8:5: expected 0x01, captured 0x00\n" + failed},

      {"", Gpio("NRST=1\nPRINT=GPIO_IN # expect 0x3f\nNRST=0\nPRINT=GPIO_IN#expect nrst = 0\n"), 0,
       ""},
      {"", Gpio("NRST=0\nPRINT=GPIO_IN # expect 62 # all but one\n"), 0, ""},
      {"", Gpio("PRINT=GPIO_IN # expect TDO=0, NRST=0 ,TMS=0\n"), 1,
       "<stdin>:4:24: expected 0x00, captured 0x3e (mask 0x29): TMS is 1, TDO is 1\n" + failed},
      {"", Gpio("PRINT=GPIO_IN # expect 0x3f/0x01\n"), 1,
       "<stdin>:4:24: expected 0x3f, captured 0x3e (mask 0x01): NRST is 0\n" + failed},
      // It holds for every run of the line, and of that line only.
      {"--keep-going",
       Gpio("REPT=2\nPRINT=GPIO_IN # expect NRST=0\nREPT=2\nREPT=1\nNRST=1\nENDR\n"
            "PRINT=GPIO_IN # expect NRST=1\nENDR\nENDR\nPRINT=GPIO_IN # expect TDO=0\n"),
       1,
       "<stdin>:5:24: expected 0x00, captured 0x3f (mask 0x01): NRST is 1\n"
       "<stdin>:13:24: expected 0x00, captured 0x3f (mask 0x20): TDO is 1\n"
       "icehost: - failed: not as expected: 2 of the values read\n"},
      // Whatever stands before it in the comment, which the plug-in does not read.
      {"", Gpio("PRINT=GPIO_IN ## expect NRST=1\n"), 1,
       "<stdin>:4:25: expected 0x01, captured 0x3e (mask 0x01): NRST is 0\n" + failed},
      {"", Gpio("PRINT=GPIO_IN # note # expect NRST=1\n"), 1,
       "<stdin>:4:31: expected 0x01, captured 0x3e (mask 0x01): NRST is 0\n" + failed},
      {"", Gpio(std::string("PRINT=GPIO_IN\0# expect NRST=1\n", 30)), 1,
       "<stdin>:4:24: expected 0x01, captured 0x3e (mask 0x01): NRST is 0\n" + failed},
      // Two wires carry 35 bytes and their own one, and what was not shifted is as nobody expects.
      {"-q --wire 2wire", "[A]\nIR=5,1f\nDR=R,288,0\nTDO=" + kZeros + "\n", 1,
       "<stdin>:4:5: expected 0x" + std::string(72, '0') + ", captured 0x" + std::string(70, '0') +
           "\n" + failed},
  };
  for (const auto& run : kRuns) {
    const Outcome outcome =
        RunOn(run.script, "run " + std::string(run.options) + " - 2>&1 >/dev/null");
    EXPECT_EQ(outcome.status, run.status) << run.options << " " << run.script;
    EXPECT_EQ(outcome.output, run.said) << run.options << " " << run.script;
  }
}

// All scripts are checked before a probe is touched.
TEST(Expectations, AreNotPlayedWithErrors) {
  const std::string warned = Gpio("NRST=1,NRST=0\n");
  const std::string wrong = Gpio("NRST=2\n");
  const std::string nowhere = " --probe remote-bitbang:unix:/nowhere";
  const struct {
    std::string script;
    std::string arguments;
    int status;
    std::string said;  // last
  } kRuns[] = {
      {warned, "-", 0, "Execute ORVEX ICE Script End."},
      {warned, "--strict -" + nowhere, 1,
       "icehost: - has warnings, and --strict is given: nothing is played"},
      {warned, "examples/reset.ini - --strict" + nowhere, 1,
       "icehost: - has warnings, and --strict is given: nothing is played"},
      {wrong, "- examples/reset.ini" + nowhere, 1,
       "icehost: - has errors: nothing is played (--force plays it as the plug-in takes it)"},
      {wrong, "--force -" + nowhere, 3,
       "icehost: unix:/nowhere: cannot connect: No such file or directory"},
      {wrong, "--force -", 1, "icehost: - failed"},
      {"", "examples/reset.ini /nowhere" + nowhere, 1,
       "icehost: /nowhere: No such file or directory"},
  };
  for (const auto& run : kRuns) {
    const Outcome outcome = RunOn(run.script, "run " + run.arguments + " 2>&1");
    EXPECT_EQ(outcome.status, run.status) << run.arguments;
    const std::size_t last = outcome.output.rfind('\n', outcome.output.size() - 2) + 1;
    EXPECT_EQ(outcome.output.substr(last), run.said + "\n") << run.arguments;
  }
}

// An expectation that cannot be compared is an error, where it stumbles.
TEST(Expectations, AreChecked) {
  const struct {
    std::string script;
    std::string said;  // "" for a script without errors
  } kScripts[] = {
      {Idcode("TDO=1,2,3"), "4:5: error: 32 bits need 4 bytes, not 3"},
      {Idcode("TDO=1,2,3,4,5"), "4:13: error: more bytes than the 32 bits hold"},
      {Idcode("TDO=1,2,x,4"), "4:9: error: \"x\" is no hexadecimal byte"},
      {Idcode("TDO="), "4:5: error: \"\" is no hexadecimal byte"},
      {Idcode("TDO=1,2,3,4\nMASK=1"), "5:6: error: 32 bits need 4 bytes, not 1"},
      {Idcode("TDO=1,2,3,4\nMASK=0,0,0,0"), "5:6: error: a mask of 0 compares nothing"},
      {Idcode("MASK=1,2,3,4"), "4:1: error: MASK without TDO: nothing is compared"},
      {Idcode("IR_MASK=1"), "4:1: error: IR_MASK without IR_TDO: nothing is compared"},
      {Idcode("IR_TDO=21"), "4:8: error: bits are set beyond the 5 of the length"},
      {Idcode("IR_TDO=1\nIR_MASK=e0"), "5:9: error: a mask of 0 compares nothing"},
      {Idcode("IR_TDO=1\nIR_MASK=ff"), ""},
      {"[A]\nIR=5,1\nDR=R,0\nTDO=1", "4:1: error: nothing is shifted: there is nothing to expect"},
      {"[A]\nIR=17,1,2,1\nDR=R,8,1\nIR_TDO=1,2,3",
       "4:1: error: of a captured IR no more than 16 bits can be told"},
      {Gpio("NRST=1 # expect NRST=1\n"), "4:10: error: nothing is read on this line"},
      {Gpio("# expect 0x1\n"), "4:3: error: nothing is read on this line"},
      {Gpio("PRINT=GPIO_IN # expect\n"), "4:17: error: expected is NAME=LEVEL"},
      {Gpio("PRINT=GPIO_IN # expect NRTS=1\n"), "4:24: error: expected is NAME=LEVEL"},
      {Gpio("PRINT=GPIO_IN # expect NRST=1, NRST=1\n"), "4:24: error: expected is NAME=LEVEL"},
      {Gpio("PRINT=GPIO_IN # expect NRST=2\n"), "4:24: error: expected is NAME=LEVEL"},
      {Gpio("PRINT=GPIO_IN # expect 0x40\n"), "4:24: error: expected is NAME=LEVEL"},
      {Gpio("PRINT=GPIO_IN # expect 1/0\n"), "4:24: error: a mask of 0 compares nothing"},
      {Gpio("PRINT=GPIO_IN # expect NRST=1 # expect TRST=0\n"),
       "4:24: error: a line has one expectation, and this one has more"},
      {Gpio("PRINT=GPIO_IN # expect: NRST=1\n"), "4:23: error: expected is NAME=LEVEL"},
      {Gpio("PRINT=GPIO_IN # expct NRST=1\n"), "4:17: warning: nothing is expected here"},
      {Gpio("PRINT=GPIO_IN # Expect: NRST=1\n"), "4:17: warning: nothing is expected here"},
      {Gpio("PRINT=GPIO_IN # I must expect NRST=1\n"), "4:17: warning: nothing is expected here"},
      {Gpio("PRINT=GPIO_IN # except for NRST=1\n"), ""},
      {Gpio("NRST=1 # expect TDO=1 (or so)\n"), "4:10: warning: nothing is read on this line"},
      {Gpio("NRST=1 # expect the worst\n"), ""},
      {"[ZEVA_ICE_GPIO]\nSTART # expect 1\nEND\n", "2:9: error: nothing is read on this line"},
      {Idcode("# expect 1"), "4:3: warning: a JTAG script says with TDO and MASK what it expects"},
      {Idcode("tdo=1,2,3,4"), "4:1: error: this expects nothing: keys are in upper case"},
      {Idcode("TDO =1,2,3,4"), "4:1: error: this expects nothing: keys are in upper case"},
      {Idcode("TDO=1,2,3,4\nTDO=1,2,3,4"), "5:1: error: this replaces the value given above"},
      {"[CONTROL]\nCDI=5\nTDO=1\n", "3:1: error: CONTROL reads nothing"},
  };
  for (const auto& checked : kScripts) {
    const std::string output = RunOn(checked.script, "check - 2>&1").output;
    const std::string said = output.substr(0, output.find('\n'));
    if (checked.said.empty()) {
      EXPECT_EQ(said, "") << checked.script;
    } else {
      EXPECT_EQ(said.substr(0, checked.said.size() + 8), "<stdin>:" + checked.said)
          << checked.script;
    }
  }
}

// A good run becomes a test that passes, and everything else stays as it is.
TEST(Expectations, AreLearned) {
  const struct {
    std::string script;
    std::string learned;
  } kScripts[] = {
      {"# head\n" + Idcode("\n[W] # a write\nIR=5,2\nDR=W,8,ff"),
       "# head\n" + Idcode("TDO=0x01,0x10,0xe5,0x1c\n\n[W] # a write\nIR=5,2\nDR=W,8,ff")},
      {Idcode("TDO=1,1,1,1  # old\nMASK=ff,0,0,0\nIR_TDO=1f # too\n[B]\nIR=5,1\nDR=R,8,0 # last"),
       Idcode("TDO=0x01,0x10,0xe5,0x1c  # old\nMASK=ff,0,0,0\nIR_TDO=0x01 # too\n[B]\nIR=5,1\n"
              "DR=R,8,0 # last\nTDO=0x01")},
      {"[A]\r\nDR=R,8,0\r\nIR=5,1\r\n", "[A]\r\nDR=R,8,0\r\nTDO=0x01\r\nIR=5,1\r\n"},
      {Gpio("PRINT=GPIO_IN\r\nREPT=2\nPRINT=GPIO_IN # twice\nNRST=1\nENDR\n"
            "NRST=0,PRINT=GPIO_IN  # expect TMS=0,NRST=1 # one\n"),
       Gpio("PRINT=GPIO_IN  # expect 0x3e/0x3f\r\nREPT=2\n"
            "PRINT=GPIO_IN # expect 0x3e/0x3e # twice\nNRST=1\nENDR\n"
            "NRST=0,PRINT=GPIO_IN  # expect 0x08/0x09 # one\n")},
  };
  for (const auto& run : kScripts) {
    const TempFile file(run.script);
    const TempFile learned("");
    EXPECT_EQ(RunIcehost("run -q --learn " + learned.Name() + " " + file.Name()).status, 0);
    EXPECT_EQ(learned.Text(), run.learned);
    EXPECT_EQ(RunIcehost("run --learn - " + file.Name()).output, run.learned);
    EXPECT_EQ(file.Text(), run.script);
    EXPECT_EQ(RunIcehost("run -q " + learned.Name()).status, 0) << run.learned;
  }
  // A script that would not pass, or a run that failed, leaves what was there.
  const TempFile old("as it was");
  for (const TempFile& refused : {TempFile(Gpio("PRINT=GPIO_IN #" + std::string(2025, 'x') + "\n")),
                                  TempFile(Idcode("TDO=0,0,0,0 # " + std::string(2030, 'x'))),
                                  TempFile("[CONTROL]\nCDI=2\n" + Idcode("TDO=1"))}) {
    EXPECT_EQ(RunIcehost("run -q --learn " + old.Name() + " " + refused.Name() + " 2>&1").status,
              1);
    EXPECT_EQ(old.Text(), "as it was");
  }
  const TempFile file(Idcode(""));
  const std::string& name = file.Name();
  const std::string both = old.Name() + " " + name + " examples/reset.ini";
  for (const auto& [arguments, message] : std::map<std::string, std::string>{
           {"- " + name + " >>" + name, "standard output is also a script"},
           {name + " " + name, name + " is also a script"},
           {both + " --ir-length 4", "takes one script"}}) {
    EXPECT_EQ(RunIcehost("run -q 2>&1 --learn " + arguments).output,
              "--learn: " + message + "\nRun with --help for more information.\n");
  }
  EXPECT_EQ(old.Text(), "as it was");
}

}  // namespace
