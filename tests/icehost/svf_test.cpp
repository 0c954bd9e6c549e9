// Serial Vector Format files: what a run writes, and what becomes of those of other tools.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "tests/icehost/run_icehost.h"

namespace {

// The lines that begin with `first`, or those that are no comment and none of icehost's messages.
std::string Lines(const std::string& text, const std::string& first = "") {
  std::istringstream lines(text);
  std::string kept;
  for (std::string line; std::getline(lines, line);) {
    const bool statement = line[0] != '#' && line[0] != '!' && line.rfind("icehost:", 0) != 0;
    if (first.empty() ? statement : line.rfind(first, 0) == 0) kept += line + "\n";
  }
  return kept;
}

// A GPIO script that clocks the TAP from Test-Logic-Reset on: 0 and 1 are TMS, i is 0 with TDI
// high; r before one of them reads the pins while TCK is low, h while it is high again. Any other
// line stands between braces; blanks count for nothing.
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

// The pins as statements, after the TRST and the STATE that begin each of these runs, and the
// losses.
TEST(Svf, SaysWhatTheTapDoes) {
  const std::string head = "ENDIR IDLE;\nENDDR IDLE;\nTRST ON;\nTRST OFF;\nSTATE IDLE;\n";
  const std::string reset_line =
      "icehost: warning: --svf: SVF has no word for NRST: a player does not reset the target\n";
  const auto loss = [](const char* what) {
    return std::string("icehost: warning: --svf: ") + what + "\n";
  };
  const std::string paused = loss("a scan went through a Pause state: a player does not");
  const std::string no_idle =
      loss("scans followed each other without Run-Test/Idle: a player goes through it");
  const struct {
    const char* edges;
    std::string told;
    std::string statements;
  } kWalks[] = {
      // Of the IDCODE that is behind a reset, 0x..01, the bits that the script read.
      {"0100 r0r0r0r1 10", "", "SDR 4 TDI (0) TDO (1) MASK (F);\n"},
      {"0100 0hi0r1 10001", "",
       "SDR 4 TDI (2) TDO (1) MASK (9);\nRUNTEST IDLE 2 TCK ENDSTATE IDLE;\n"},
      {"0100 {GPIO_OE=0x3f}r0r0{GPIO_OE=0x1f}00001 10", "", "SDR 7 TDI (00);\n"},
      {"0100r0{TCK=0}{PRINT=GPIO_IN}{GPIO_OE=0x3f}{TDO=1}{TCK=1}{GPIO_OE=0x1f} r1 10", "",
       "SDR 3 TDI (0) TDO (3) MASK (5);\n"},
      {"01100 ii001h 10", "", "SIR 5 TDI (03) TDO (01) MASK (10);\n"},
      // Where the script does not come to Run-Test/Idle behind a scan.
      {"0100 i1 1111 01100 i1 1111 0", "",
       "ENDDR DRPAUSE;\nSDR 2 TDI (1);\nSTATE RESET;\nSTATE IDLE;\nENDIR IRPAUSE;\nSIR 2 TDI "
       "(1);\nSTATE RESET;\nSTATE IDLE;\n"},
      {"0100 i1 1100 01 10", no_idle, "SDR 2 TDI (1);\nSDR 2 TDI (0);\n"},
      {"0100 i1 1 {NRST=0} 111", no_idle, "SDR 2 TDI (1);\nSTATE RESET;\n"},
      {"0100 i1 010 i1 10 100 1 10", paused, "SDR 4 TDI (5);\nSDR 1 TDI (0);\n"},
      // What cannot be said.
      {"010 1 10 100 i1 10",
       loss("SVF has no scan of 0 bits: a player neither captures nor updates there"),
       "SDR 2 TDI (1);\n"},
      {"0100 i0 {TRST=0}{TRST=1} 0", loss("a scan was cut short: it is not in the file"),
       "TRST ON;\nTRST OFF;\nSTATE IDLE;\n"},
      {"0000 {TRST=0}{TRST=1} 0", "",
       "RUNTEST IDLE 3 TCK ENDSTATE IDLE;\nTRST ON;\nTRST OFF;\nSTATE IDLE;\n"},
      {"0100 i0", loss("a scan was cut short: it is not in the file"), ""},
      {"0100 {REPT=1048576}{TCK=0}{TCK=1}{ENDR} 1 10",
       loss("a scan has more than 1048576 bits: it is not in the file"), ""},
      {"{TRST=1}0{GPIO_OE=0x3}{TCK=0}{GPIO_OE=0x1f}",
       loss("SVF cannot release pins: a player drives them"), ""},
  };
  for (const auto& walk : kWalks) {
    const Outcome outcome = RunOn(Walk(walk.edges), "run -q --svf - - 2>&1");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(Lines(outcome.output), head + walk.statements) << walk.edges;
    EXPECT_EQ(Lines(outcome.output, "icehost:"), reset_line + walk.told) << walk.edges;
  }
}

// The places of what is played; failed comparisons; nothing that a script says ends its comment;
// each loss is told once.
TEST(Svf, NamesThePlaces) {
  const std::string name = "A\r;SDR 8 TDI (00);\xff" + std::string(300, 'n');
  const Outcome outcome = RunOn("[" + name +
                                    "]\nIR=5,1\nDR=R,8,0\nTDO=0x02\nIR_TDO=0x1\n"
                                    "IR_MASK=0x4",
                                "run -q --keep-going --svf - - 2>&1");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output.substr(outcome.output.find("! Played")),
            "! Played by icehost, which wrote this while it ran. TDO is what came back.\n"
            "ENDIR IDLE;\nENDDR IDLE;\n"
            "! -:3 [A ;SDR 8 TDI (00);?" +
                std::string(176, 'n') +
                "...\n"
                "STATE RESET;\nSTATE IDLE;\nSIR 5 TDI (01) TDO (01) MASK (04);\n"
                "SDR 8 TDI (00) TDO (01) MASK (FF);\n"
                "! line 4 expects 0x02 of dr_out, mask 0xff\n! The script failed.\n");
  EXPECT_EQ(
      RunIcehost("run -q --svf - examples/two_wire.ini examples/two_wire.ini | grep -v ^S").output,
      "! Played by icehost, which wrote this while it ran. TDO is what came back.\n"
      "ENDIR IDLE;\nENDDR IDLE;\n"
      "! examples/two_wire.ini:9 [READ_IDCODE]\n! over the 2-wire interface\n"
      "! examples/two_wire.ini:9 [READ_IDCODE]\n! examples/two_wire.ini:9 [READ_IDCODE]\n");
  EXPECT_EQ(
      RunIcehost("run -q --svf - examples/two_wire.ini examples/reset.ini - 2>&1 >/dev/null"
                 "<examples/reset.ini")
          .output,
      "icehost: warning: --svf: SVF knows no 2-wire interface: a player scans over 5 wires\n"
      "icehost: warning: --svf: SVF has no word for NRST: a player does not reset the target\n");
}

// SVF text, what is told of it, and the script without its comments; empty: none.
TEST(Svf, ImportsWhatAScriptCanSay) {
  const struct {
    const char* svf;
    const char* told;
    const char* script;
  } kFiles[] = {
      // Forms: cases, blanks, comments, values over several lines, zeros in front.
      {"sir 5 tdi(1);Sdr 8 Tdi ( a ! ) 1\n// ) 2\n5 ) ;", "",
       "[LINE_1]\nIR=5,0x01\nDR=W,8,0xa5\n\n"},
      {"SIR 5 TDI (00000000000000000000001F) SMASK (1F);SDR 12 TDI (ABC) TDO (0FF) MASK (0F0);", "",
       "[LINE_1]\nIR=5,0x1f\nDR=R,12,0xbc,0x0a\nTDO=0xff,0x00\nMASK=0xf0,0x00\n\n"},
      // TDI and MASK are remembered, TDO is not; another length forgets them.
      {"SIR 5 TDI (1) TDO (1) MASK (3);\nSDR 8 TDI (12) TDO (FF) MASK (F0);\nSDR 8;\nSDR 8 TDO "
       "(01);\n"
       "SDR 8 TDI (34) MASK (0) TDO (01);\nSIR 5 TDO (1);\nSDR 9 TDI (0) TDO (1FF);\n"
       "SDR 8 TDI (56) TDO (78);",
       "",
       "[LINE_2]\nIR=5,0x01\nDR=R,8,0x12\nIR_TDO=0x01\nIR_MASK=0x03\nTDO=0xff\nMASK=0xf0\n\n"
       "[LINE_3]\nIR=5,0x01\nDR=W,8,0x12\n\n"
       "[LINE_4]\nIR=5,0x01\nDR=R,8,0x12\nTDO=0x01\nMASK=0xf0\n\n"
       "[LINE_5]\nIR=5,0x01\nDR=W,8,0x34\n\n"
       "[LINE_7]\nIR=5,0x01\nDR=R,9,0x00,0x00\nIR_TDO=0x01\nIR_MASK=0x03\nTDO=0xff,0x01\n\n"
       "[LINE_8]\nIR=5,0x01\nDR=R,8,0x56\nTDO=0x78\n\n"},
      // A header comes first, a trailer last; each is in force until the next.
      {"HIR 2 TDI (3); TIR 3 TDI (7) TDO (1) MASK (1); HDR 1 TDI (1) TDO (1); TDR 1 TDI (0);\n"
       "SIR 4 TDI (1);\nSDR 8 TDI (FF) TDO (00);\nHDR 0; TDR 0; HIR 0; TIR 0;\nSIR 4 TDI (2);\nSDR "
       "8;",
       "",
       "[LINE_3]\nIR=9,0xc7,0x01\nDR=R,10,0xff,0x01\nIR_TDO=0x40,0x00\nIR_MASK=0x40,0x00\n"
       "TDO=0x01,0x00\nMASK=0xff,0x01\n\n"
       "[LINE_6]\nIR=4,0x02\nDR=W,8,0xff\n\n"},
      // Scans without their other half, and several on a line.
      {"SDR 8 TDI (0);SDR 8;\nSIR 5 TDI (2);SIR 5;",
       "<stdin>:1:1: warning: no SIR before: this scans what the instruction before the file "
       "selects, and icehost resets the TAP first\nSDR 8 TDI (0);SDR 8;\n^\n",
       "[LINE_1]\nIR=0,0x00\nDR=W,8,0x00\n\n[LINE_1_2]\nIR=0,0x00\nDR=W,8,0x00\n\n"
       "[LINE_2]\nIR=5,0x02\nDR=W,0,0x00\n\n[LINE_2_2]\nIR=5,0x02\nDR=W,0,0x00\n\n"},
      // What changes nothing; a reset behind the last scan stays undone, and that is told.
      {"TRST ON; TRST OFF; TRST ABSENT; ENDIR IDLE; ENDDR IDLE; STATE RESET IDLE; FREQUENCY;\n"
       "FREQUENCY 1.5E6 HZ; RUNTEST RESET 100 TCK ENDSTATE IDLE; SIR 5 TDI (1);\n"
       "RUNTEST IDLE 16 TCK 1E-5 SEC MAXIMUM 1 SEC ENDSTATE IDLE; SDR 1 TDI (0);\n STATE RESET;",
       "<stdin>:4:2: warning: left out: a script cannot reset the TAP behind its scans; the last "
       "instruction stays\n STATE RESET;\n ^\n",
       "[LINE_3]\nIR=5,0x01\nDR=W,1,0x00\n\n"},
      {"SIR 16 TDI (8001) TDO (8001); SDR 288 TDI (0);", "",
       "[LINE_1]\nIR=16,0x01,0x80\nDR=W,288,"
       "0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,"
       "0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x00\n"
       "IR_TDO=0x01,0x80\n\n"},
  };
  for (const auto& file : kFiles) {
    const Outcome outcome = RunOn(file.svf, "import - 2>&1");
    EXPECT_EQ(outcome.status, 0) << file.svf;
    const std::string script = outcome.output.substr(std::string(file.told).size());
    EXPECT_EQ(outcome.output.substr(0, outcome.output.size() - script.size()), file.told);
    std::string sections = Lines(script);
    EXPECT_EQ(sections.erase(0, 1), file.script) << file.svf;
    const Outcome check = RunOn(script, "check --strict - 2>&1");
    EXPECT_EQ(check.status, 0) << file.svf << check.output;
  }
}

// Each fault alone: the place and the reason.
TEST(Svf, RefusesWhatAScriptCannotSay) {
  const std::string no_wait =
      " may matter: left out are up to 16 TCK cycles and 1e-05 s between two scans";
  const struct {
    const char* svf;
    const char* place;
    std::string error;
  } kFaults[] = {
      {"", "1:1", "the file scans nothing: it has no SIR and no SDR"},
      {"SIR 5 TDI (1)", "1:1", "the statement has no semicolon at its end"},
      {"SDR 8 TDI (00; SIR 2 TDI (1);", "1:11", "this ( is not closed"},
      {"\n  SDRX 8;", "2:3", "SVF has no statement \"SDRX\""},
      {") SIR 2 TDI (1);", "1:1", "SVF has no statement \")\""},
      {"(1);", "1:2", "SVF has no statement a value"},
      {"SDR;", "1:1", "\"SDR\" lacks its length"},
      {"SDR -1 TDI (0);", "1:5", "\"-1\" is no length in bits"},
      {"SDR (8) TDI (0);", "1:6", "a value is no length in bits"},
      {"SDR 0;", "1:1", "a scan of 0 bits cannot be said in a script"},
      {"SDR 289 TDI (0);", "1:5", "a script's register has at most 288 bits"},
      {"SDR 99999999999999999999 TDI (0);", "1:5", "a script's register has at most 288 bits"},
      {"HDR 280 TDI (0);\nSDR 9 TDI (0);", "2:1",
       "with header and trailer this has 289 bits: a script's register has at most 288"},
      {"SDR 8;", "1:1", "\"SDR\" has another length than before, and no TDI"},
      {"SDR 8 TDI (0) TDX (0);", "1:15", "\"TDX\" is none of TDI, TDO, MASK and SMASK"},
      {"SDR 8 TDI (0) TDI (0);", "1:15", "TDI is given twice"},
      {"SDR 8 TDI 00;", "1:7", "TDI lacks its value in parentheses"},
      {"SDR 8 TDI\n(0 !\n 0g);", "3:3", "\"g\" is no hexadecimal digit"},
      {"SDR 8 TDI ( );", "1:12", "the parentheses hold no digit"},
      {"SDR 9 TDI (00\n03FF);", "2:2", "a bit is set beyond the 9 of the length"},
      {"SDR 9 TDI (1000);", "1:12", "a bit is set beyond the 9 of the length"},
      {"SIR 17 TDI (0) TDO (0) MASK (1);", "1:1",
       "a script compares a captured IR of up to 16 bits, this one has 17: leave its TDO out"},
      {"SIR 5 TDI (1); STATE RESET; SIR 5;", "1:16",
       "a script cannot reset the TAP between scans: split the file here"},
      {"TRST ON; SIR 5 TDI (1);", "1:10", "TRST is on, and a script cannot hold it during a scan"},
      {"RUNTEST RESET 1 TCK; SDR 5 TDI (1);", "1:22",
       "a script cannot scan the register that a TAP reset selects: load its instruction with SIR "
       "first"},
      {"RUNTEST 17 TCK;", "1:1", "a script cannot wait, and 17 TCK cycles" + no_wait},
      {"RUNTEST 1.1E-5 SEC;", "1:1", "a script cannot wait, and 1.1e-05 s" + no_wait},
      {"RUNTEST 16 TCK; RUNTEST 1 TCK; RUNTEST 16 TCK;", "1:17",
       "a script cannot wait, and 17 TCK cycles" + no_wait},
      {"RUNTEST 15 TCK; STATE IDLE IDLE;", "1:17",
       "a script cannot wait, and 17 TCK cycles" + no_wait},
      {"RUNTEST RESET 1 SEC;", "1:1", "a script cannot wait, and 1 s" + no_wait},
      {"RUNTEST 5 SCK;", "1:11", "a script has no system clock SCK"},
      {"RUNTEST nan TCK;", "1:9",
       "expected RUNTEST [state] [count TCK] [time SEC [MAXIMUM time SEC]] [ENDSTATE state]"},
      {"RUNTEST 5 TCK ENDSTATE DRPAUSE;", "1:24",
       "a script stays in Run-Test/Idle: IDLE is the state, or RESET before the first scan"},
      {"STATE DRPAUSE;", "1:7",
       "a script cannot bring the TAP to \"DRPAUSE\": it knows RESET, before the first scan, and "
       "IDLE"},
      {"ENDDR DRPAUSE;", "1:1", "a script's scans end in Run-Test/Idle: IDLE is the one end state"},
      {"TRST HIGH;", "1:6", "\"HIGH\" is none of ON, OFF, Z and ABSENT"},
      {"FREQUENCY 1 MHZ;", "1:1", "expected FREQUENCY, or FREQUENCY number HZ"},
      {"PIO (HL);", "1:1", "a JTAG script has no other pins than those of the TAP"},
  };
  for (const auto& fault : kFaults) {
    const Outcome outcome = RunOn(fault.svf, "import - 2>&1");
    EXPECT_EQ(outcome.status, 1) << fault.svf;
    EXPECT_EQ(outcome.output.substr(0, outcome.output.find('\n')),
              std::string("<stdin>:") + fault.place + ": error: " + fault.error);
    EXPECT_EQ(outcome.output.find("[LINE"), std::string::npos) << "a script all the same";
  }
}

// Many faults, endless statements, signs that are none; the bounds of size; the files.
TEST(Svf, BoundsWhatItTakes) {
  const struct {
    std::string command;
    int status;
    const char* output;
  } kRuns[] = {
      {"yes 'FOO 1;' | head -n 1000 | icehost import - 2>&1 | grep -c error:", 0, "50\n"},
      {"(printf 'SDR 8 TDI (0) '; yes ')' | head -n 100; echo ';') | icehost import - 2>&1", 1,
       "<stdin>:1:1: error: the statement has more than 64 words\nSDR 8 TDI (0) )\n^\n"
       "icehost: - is not imported\n"},
      {"printf 'SIR 5 TDI (1\\0);\\0;' | icehost import - 2>&1", 1,
       "<stdin>:1:13: error: \" \" is no hexadecimal digit\nSIR 5 TDI (1 ); ;\n            ^\n"
       "<stdin>:1:16: error: SVF has no statement \" \"\nSIR 5 TDI (1 ); ;\n               ^\n"
       "icehost: - is not imported\n"},
      {"(echo 'SDR 288 TDI (0);'; yes 'SDR 288;' | head -n 8000) | icehost import --size-limit 1 - "
       "2>&1 | head -n 1 | cut -d: -f3-",
       0, "1: error: the script becomes larger than 1 MiB; --size-limit lets more out\n"},
      {"icehost import /nowhere 2>&1", 1, "icehost: /nowhere: No such file or directory\n"},
      {"echo 'SIR 5 TDI (1);' | icehost import - 2>&1 >/dev/full", 3,
       "icehost: standard output: No space left on device\n"},
      {"cd $(mktemp -d) && echo 'SIR 5 TDI (1);' >'expect\n#xExPeCt TDO=1' && icehost import "
       "expect* -o s.ini && icehost check --strict s.ini && head -n 2 s.ini && icehost import -o "
       "s.ini s.ini 2>&1 | head -n 1; rm -r $PWD",
       0,
       "# Imported by icehost from ?xpect #x?xPeCt TDO=1. A section is named after the line of "
       "its\n"
       "# scan there.\n--output: s.ini is also a script\n"},
  };
  for (const auto& run : kRuns) {
    const Outcome outcome = RunShell(run.command);
    EXPECT_EQ(outcome.status, run.status) << run.command;
    EXPECT_EQ(outcome.output, run.output) << run.command;
  }
}

}  // namespace
