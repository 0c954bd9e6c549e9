#include <gtest/gtest.h>

#include <numeric>
#include <sstream>

#include "jtag/jtag_scr.h"
#include "tests/plugin/fake_host.h"

namespace {

const std::string kBanner = "Execute ORVEX_JTAG Script.\\n";
const std::string kEnd = "Execute ORVEX ICE Script End.\\n";

// Returns the transcript without the first messages, which all JTAG scripts have in common.
std::string RunJtag(FakeHost& host, const std::string& script) {
  const std::string transcript = host.RunText(script);
  const std::string head = "\"\"\n\"" + kBanner;
  EXPECT_EQ(transcript.substr(0, head.size()), head) << script;
  return transcript.substr(std::min(head.size(), transcript.size()));
}

// Returns the arguments of the insert calls: the numbers of the script as the plug-in reads them.
std::string Inserts(const std::string& script) {
  FakeHost host;
  std::istringstream transcript(RunJtag(host, script));
  std::string inserts;
  for (std::string line; std::getline(transcript, line);) {
    if (line.rfind("insert ", 0) == 0) inserts += line.substr(7) + "\n";
  }
  return inserts;
}

// Returns n fields: ",01", ",02", ...
std::string Fields(int n) {
  std::string fields;
  for (int i = 1; i <= n; ++i) fields += "," + std::to_string(i / 10) + std::to_string(i % 10);
  return fields;
}

TEST(JtagScript, PrintsScansInPieces) {
  FakeHost host;
  host.pieces = true;
  host.capture = {0xAA, 0xBB, 0x78, 0x56, 0x34, 0x12, 0xCC};
  EXPECT_EQ(host.RunText("[CONTROL]\nCDI=5\n[READ_ID]\nIR=5,0x01\nDR=R,12,0xEF,0xCD\n"),
            "\"\"\n"
            "\"Execute ORVEX_JTAG Script.\\n\"\n"
            "config 3 0\n"
            "\"Operator No.0 success: Set CDI JTAG(5-wires)\\n\"\n"
            "config 22 0\n"
            "insert 5:01 12:efcd\n"
            "execute\n"
            "\"Operator No.1 success: IR size 5 bits, Read DR size 12 bits with jtag5:\\n\"\n"
            "\"\\tIR   5 bits in  value 0x\"\n\"01\"\n\"\\n\"\n"
            "\"\\tDR  12 bits in  value 0x\"\n\"cd\"\n\"ef\"\n\"\\n\"\n"
            "\"\\tDR  12 bits out value 0x\"\n\"56\"\n\"78\"\n\"\\n\"\n"
            "\"Execute ORVEX ICE Script End.\\n\"\n"
            "= 0\n");
}

TEST(JtagScript, FollowsTheWireInterface) {
  const struct {
    const char* name;
    int answer;
    bool shows_write;
    bool two_wire;
  } kWires[] = {{"jtag5", 0, true, false},   {"zeva-j2", 1, false, true},
                {"cjtag2", 2, false, false}, {"jtag5", 7, false, false},
                {"jtag5", -1, false, false}, {"jtag5", 3, false, false}};
  for (const auto& [name, answer, shows_write, two_wire] : kWires) {
    for (const bool read : {false, true}) {
      FakeHost host;
      host.results["query"] = {answer};
      host.capture = {0, 0, 0x22, 0x33};
      const std::string ir = two_wire ? "13" : "5", dr = two_wire ? "16" : "8";
      const std::string pad = two_wire ? " " : "  ";
      const std::string insert = !two_wire ? "5:01 8:5a"
                                 : read    ? "13:0001 16:015a"
                                           : "13:0001 16:005a";
      const std::string out =
          "\\tDR " + pad + dr + " bits out value 0x" + (two_wire ? "33" : "22") + "\\n";
      EXPECT_EQ(
          RunJtag(host, std::string("[A]\nIR=5,1\nDR=") + (read ? " read" : "W") + ",8,5a"),
          "\"\nconfig 22 0\ninsert " + insert + "\nexecute\n\"Operator No.0 success: IR size " +
              ir + " bits, " + (read ? "Read" : "Write") + " DR size " + dr + " bits with " + name +
              ":\\n\\tIR " + pad + ir + " bits in  value 0x01\\n\\tDR " + pad + dr +
              " bits in  value 0x5a\\n" + (read || shows_write ? out : "") + kEnd + "\"\n= 0\n");
    }
  }
}

TEST(JtagScript, ConvertsItsNumbers) {
  const struct {
    const char* values;
    const char* insert;
  } kCases[] = {
      {"IR=8,\nDR=W,0", "8:00 0:\n"},
      {"IR=0x10,1\nDR=W,1", "0: 1:00\n"},
      {"IR=4,1,2\nDR=r,8,ff", "4:01 8:ff\n"},  // FakeHost shows no bytes beyond the length
      {"IR=16,0x34,0x12\nDR=,16, 0x1F ,\t0X1ff", "16:3412 16:1fff\n"},
      {"IR=32,0x0x1f,zz,-1,0x-2\nDR=w, 24 bits,+3,0xg,ffffffffffffffffff",
       "32:1f00fffe 24:0300ff\n"},
      {"IR=-5,1\nDR=W,-2147483648,1", "-5: -2147483648:\n"},
      {"IR=4294967304,9\nDR=W,99999999999999999999,1", "8:09 -1:\n"},
      {"IR=9223372036854775806,1\nDR=W,-9223372036854775807,1", "-2: 1:01\n"},
      {"IR=24,7ffffffffffffffe,8000000000000000,-8000000000000001\nDR=W,-9999999999999999999",
       "24:feff00 0:\n"},
      // White space may precede a number. The ASCII neighbours of digits and letters end it.
      {"IR=48,\v\r1,1/,1:,1@,1G,1`\nDR=W,40,1g,0X0x1f,0aX1,0x,\t 1",
       "48:010101010101 40:011f0a0001\n"},
      {"IR=3,1,2,3,4\nDR=W,3,1,2,3,4", "3:01 3:01\n"},
  };
  for (const auto& test : kCases) {
    EXPECT_EQ(Inserts(std::string("[A]\n") + test.values), test.insert) << test.values;
  }
  // A register of n bits keeps the first n of the listed bytes.
  icescript::JtagScr scr(nullptr, [](const char*) { return 0; });
  EXPECT_STREQ(scr.errorMessage, "No scr file specified.\n");
  const std::unique_ptr<icescript::JtagOperatorData> record(
      scr.ParseJtagOperatorData("3,1,2,3,4", "W,2,1,2,3"));
  EXPECT_TRUE(record->irData[2] == 3 && record->irData[3] == 0 && record->drData[1] == 2 &&
              record->drData[2] == 0);
}

TEST(JtagScript, AnswersWhetherAllWasUnderstood) {
  icescript::JtagScr scr(nullptr, [](const char*) { return 0; });
  EXPECT_EQ(scr.ParseScr(nullptr), -1);
  const struct {
    const char* text;
    int status;
  } kCases[] = {{"", 0}, {"[CONTROL]\nCDI=5", 0}, {"[CONTROL]\nCDI=3", -1}, {"[A]\nIR=5,1", -1}};
  for (const auto& test : kCases) {
    TempFile file(test.text);
    EXPECT_EQ(scr.ParseScr(file.Path()), test.status) << test.text;
  }
  EXPECT_EQ(scr.GetJtagOperatorDataCount(), 1);
}

TEST(JtagScript, NeverHandsOverMoreThanARecordHolds) {
  const struct {
    std::string section;
    bool runs;
  } kCases[] = {
      {"IR=288" + Fields(36) + "\nDR=W,288" + Fields(36), true},
      {"IR=8" + Fields(99) + "\nDR=W,0" + Fields(99), true},  // stores 8 bytes of IR, none of DR
      {"IR=36" + Fields(37) + "\nDR=W,36" + Fields(36), true},
      {"IR=37" + Fields(37) + "\nDR=W,8,1", false},
      {"IR=8,1\nDR=R,288" + Fields(37), false},
  };
  for (const auto& test : kCases) {
    FakeHost host;
    const std::string transcript =
        RunJtag(host, "[A]\n" + test.section + "\n[B]\nIR=8,7\nDR=W,8,9\n");
    const bool ran = transcript.find("IR size 8 bits, Write DR size 8 bits") != std::string::npos;
    EXPECT_TRUE(ran) << "the next section did not run";
    const std::string tail = "stdout \"A syntax error\\n\"\n= 0\n";
    const bool refused = transcript.find(tail) != std::string::npos;
    EXPECT_EQ(refused, !test.runs) << test.section;
    EXPECT_EQ(transcript.find("No.1") != std::string::npos, test.runs) << test.section;
  }
}

TEST(JtagScript, BoundsTheLongestScan) {
  FakeHost host;
  host.results["query"] = {0, 1};
  host.capture.resize(39);
  std::iota(host.capture.begin(), host.capture.end(), std::uint8_t{0x80});
  const std::string scan = "IR=288" + Fields(36) + "\nDR=R,288" + Fields(36) + "\n";
  const std::string transcript = RunJtag(host, "[A]\n" + scan + "[B]\n" + scan);
  // Fields(36) lists the bytes 01 to 36, in hexadecimal.
  std::string listed, dump, capture5, capture2;
  char byte[3];
  for (int i = 1; i <= 36; ++i) {
    std::snprintf(byte, sizeof byte, "%d%d", i / 10, i % 10);
    listed += byte;
    dump.insert(0, byte);
    std::snprintf(byte, sizeof byte, "%02x", 0x80 + i + 1);
    capture5.insert(0, byte);
    std::snprintf(byte, sizeof byte, "%02x", 0x80 + i + 2);
    capture2.insert(0, byte);
  }
  EXPECT_NE(transcript.find("insert 288:" + listed + " 288:" + listed + "\n"), std::string::npos);
  EXPECT_NE(transcript.find("DR 288 bits in  value 0x" + dump + "\\n"), std::string::npos);
  EXPECT_NE(transcript.find("DR 288 bits out value 0x" + capture5 + "\\n"), std::string::npos);
  // With two wires, bytes 0 to 31 move up, bytes 33 to 35 stay, and the dump ends with the array.
  const std::string moved = listed.substr(0, 64) + listed.substr(66);
  const std::string moved_dump = dump.substr(0, 6) + dump.substr(8);
  EXPECT_NE(transcript.find("insert 296:00" + moved + " 296:01" + moved + "\n"), std::string::npos);
  EXPECT_NE(transcript.find("IR 296 bits in  value 0x" + moved_dump + "\\n"), std::string::npos);
  EXPECT_NE(transcript.find("DR 296 bits out value 0x" + capture2 + "\\n"), std::string::npos);
}

TEST(JtagScript, ReportsWhatItDoesNotUnderstand) {
  const std::string reset = "\"\nreset 1\n\"Operator No.0 success: Reset the target.\\n";
  const std::string two_wire =
      "\"\nconfig 3 1\n\"Operator No.0 success: Set CDI to SWD(2-wires)\\n";
  const std::string five_wire = "\"\nconfig 3 0\n\"Operator No.0 success: Set CDI JTAG(5-wires)\\n";
  const std::string ok = kEnd + "\"\n= 0\n";
  const auto syntax = [](const std::string& section) {
    return kEnd + "\"\nstdout \"" + section + " syntax error\\n\"\n= 0\n";
  };
  const std::string missing = "Unable to locate specified value.";
  const struct {
    std::string script;
    std::string transcript;
  } kCases[] = {
      {"[EMPTY]\n[S]", ok},
      {"[CONTROL]\nRESET=0\nCDI=2", reset + ok},
      {"[CONTROL]\nRESET=\nCDI= 2a", two_wire + ok},
      {"[CONTROL]\nCDI=2\n[CONTROL]\nRESET=1", reset + ok},
      {"[CONTROL]\nCDI=3", syntax("CONTROL")},
      {"[CONTROL]\nCDI=five\n", syntax("CONTROL")},
      {"[CONTROL]\nX=1", syntax("CONTROL")},
      {"[A%s]\nIR=8\nDR=W,0\n[CONTROL]\nCDI=5", five_wire + syntax("A%s")},
      {"[A]\nIR=8,1\nDR=R", syntax("A")},
      // For a section without IR or DR, the message is from the last lookup that failed.
      {"[CONTROL]\nCDI=5\n[A]\nIR=8,1\n[B]\nIR=8,1\nDR=W,0", missing + five_wire + ok},
      {"[CONTROL]\nCDI=5\n[A]\nIR=", missing + five_wire + ok},
      {"[CONTROL]\nRESET=1\n[A]\nIR=", reset + ok},
      {"[control]\nCDI=5", missing + ok},
      {"[A]\nIR = 8,1", missing + ok},
      {"[A]\nIR=8,1\nDR=\n", ok},
      {"[A]\njunk", "junk in A: Syntax error\\n" + ok},
  };
  for (const auto& test : kCases) {
    FakeHost host;
    EXPECT_EQ(RunJtag(host, test.script), test.transcript) << test.script;
  }
}

}  // namespace
