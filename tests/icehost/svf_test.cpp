// Serial Vector Format files that icehost writes from the pins of a run.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "tests/icehost/run_icehost.h"

namespace {

// Returns the lines that begin with `first`. If it is empty, returns all lines except the first
// line of the file, comments with places in the script, and messages.
std::string Lines(const std::string& text, const std::string& first = "") {
  std::istringstream lines(text);
  std::string kept;
  for (std::string line; std::getline(lines, line);) {
    const bool statement = line.rfind("! Recorded", 0) != 0 && line.rfind("! -:", 0) != 0 &&
                           line.rfind("icehost:", 0) != 0;
    if (first.empty() ? statement : line.rfind(first, 0) == 0) kept += line + "\n";
  }
  return kept;
}

// Returns a GPIO script with TCK cycles from Test-Logic-Reset on. 0 and 1 are cycles with this TMS,
// and i is a 0 with TDI high. r reads the pins in the next cycle, before TCK rises. h reads them
// after the previous cycle, while TCK is high. {LINE} is any other line. Blanks are ignored.
std::string Walk(const std::string& edges) {
  std::string script = "[ZEVA_ICE_GPIO]\nSTART\nGPIO_OE=0x1f\nNRST=1\nTRST=1\n";
  bool read_low = false;
  for (std::size_t i = 0; i < edges.size(); ++i) {
    const char edge = edges[i];
    if (edge == '{') {
      const std::size_t end = edges.find('}', i);
      script += edges.substr(i + 1, end - i - 1) + "\n";
      i = end;
    } else if (edge == 'r') {
      read_low = true;
    } else if (edge == 'h') {
      script += "PRINT=GPIO_IN\n";
    } else if (edge != ' ') {
      script += std::string("TCK=0,TMS=") + (edge == '1' ? "1" : "0") +
                ",TDI=" + (edge == 'i' ? "1" : "0") + "\n" + (read_low ? "PRINT=GPIO_IN\n" : "") +
                "TCK=1\n";
      read_low = false;
    }
  }
  return script + "END";
}

// Checks the statements and comments after the resets that begin each run, and the warnings about
// actions that SVF cannot express.
TEST(Svf, SaysWhatTheTapDoes) {
  const std::string head =
      "ENDIR IDLE;\nENDDR IDLE;\n! NRST low\nTRST ON;\n! NRST high\nTRST OFF;\nSTATE IDLE;\n";
  const std::string reset_line =
      "icehost: warning: --svf: SVF has no statement for NRST: a player does not reset the "
      "target\n";
  const auto loss = [](const char* what) {
    return std::string("icehost: warning: --svf: ") + what + "\n";
  };
  const std::string paused =
      loss("a scan went through a Pause state, but a player's scan does not");
  const std::string no_idle = loss(
      "scans followed each other without Run-Test/Idle between them, but a player enters this "
      "state");
  const struct {
    const char* edges;
    std::string told;
    std::string statements;
  } kWalks[] = {
      // After the reset, DR contains the IDCODE, 0x..01. TDO and MASK contain only the bits read.
      {"0100 r0r0r0r1 10", "", "SDR 4 TDI (0) TDO (1) MASK (F);\n"},
      {"0100 0hi0r1 10001", "",
       "SDR 4 TDI (2) TDO (1) MASK (9);\nRUNTEST IDLE 2 TCK ENDSTATE IDLE;\n"},
      {"0100 {GPIO_OE=0x3f}r0r0{GPIO_OE=0x1f}00001 10", "", "SDR 7 TDI (00);\n"},
      {"0100r0{TCK=0}{PRINT=GPIO_IN}{GPIO_OE=0x3f}{TDO=1}{TCK=1}{GPIO_OE=0x1f} r1 10", "",
       "SDR 3 TDI (0) TDO (3) MASK (5);\n"},
      {"01100 ii001h 10", "", "SIR 5 TDI (03) TDO (01) MASK (10);\n"},
      // These scans are not followed by Run-Test/Idle.
      {"0100 i1 1111 01100 i1 1111 0", "",
       "ENDDR DRPAUSE;\nSDR 2 TDI (1);\nSTATE RESET;\nSTATE IDLE;\nENDIR IRPAUSE;\nSIR 2 TDI "
       "(1);\nSTATE RESET;\nSTATE IDLE;\n"},
      {"0100 i1 1100 01 10", no_idle,
       "SDR 2 TDI (1);\n! the next scan follows without Run-Test/Idle\nSDR 2 TDI (0);\n"},
      {"0100 i1 1 {NRST=0} 111", no_idle,
       "SDR 2 TDI (1);\n! NRST low\n! a reset follows without "
       "Run-Test/Idle\nSTATE RESET;\n"},
      {"0100 i1 010 i1 10 100 1 10", paused,
       "! scan through Pause-DR\nSDR 4 TDI (5);\nSDR 1 TDI (0);\n"},
      // SVF cannot express these actions.
      {"010 1 10 100 i1 10",
       loss("SVF has no scan of 0 bits: a player skips its capture and update"),
       "! scan of 0 DR bits: left out\nSDR 2 TDI (1);\n"},
      {"0100 i0 {TRST=0}{TRST=1} 0", loss("a scan was cut short: it is not in the file"),
       "! scan of 2 DR bits: cut short, left out\nTRST ON;\nTRST OFF;\nSTATE IDLE;\n"},
      {"0000 {TRST=0}{TRST=1} 0", "",
       "RUNTEST IDLE 3 TCK ENDSTATE IDLE;\nTRST ON;\nTRST OFF;\nSTATE IDLE;\n"},
      {"0100 i0", loss("a scan was cut short: it is not in the file"),
       "! scan of 2 DR bits: cut short, left out\n"},
      {"0100 {REPT=1048576}{TCK=0}{TCK=1}{ENDR} 1 10",
       loss("a scan has more than 1048576 bits: it is not in the file"),
       "! scan of 1048577 DR bits: too long, left out\n"},
      {"{TRST=1}0{GPIO_OE=0x3}{TCK=0}{GPIO_OE=0x1f}",
       loss("SVF cannot release pins: a player drives them"), "! TCK, TMS, TDI released\n"},
  };
  for (const auto& walk : kWalks) {
    const Outcome outcome = RunOn(Walk(walk.edges), "run -q --svf - - 2>&1");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(Lines(outcome.output), head + walk.statements) << walk.edges;
    EXPECT_EQ(Lines(outcome.output, "icehost:"), reset_line + walk.told) << walk.edges;
  }
}

}  // namespace
