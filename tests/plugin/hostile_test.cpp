#include <gtest/gtest.h>

#include <cerrno>
#include <climits>

#include "tests/plugin/fake_host.h"

namespace {

const std::string kGpio = "[ORVEX_ICE_GPIO]\nSTART\n";
const std::string kScan = "\nIR=8,1\nDR=W,0\n";
const std::string kEnd = "Execute ORVEX ICE Script End.\\n\"\n";

std::string Times(int n, const std::string& text) {
  std::string all;
  while (n-- > 0) all += text;
  return all;
}

// Returns n sections [S0], [S1] ... with the same body.
std::string Sections(int n, const std::string& body) {
  std::string all;
  for (int i = 0; i < n; ++i) all += "[S" + std::to_string(i) + "]" + body;
  return all;
}

TEST(HostileScript, IsRunOrRefused) {
  const std::string name(2045, 'n');
  const std::string no_end = "\"Syntax error, no end found\"\n= -1\n";
  const std::string missing = "Unable to locate specified value." + kEnd + "= 0\n";
  const struct {
    std::string script;
    std::string end;  // the end of the transcript
  } kCases[] = {
      {std::string(1000000, 'x'), no_end},
      {kGpio + std::string(1000000, 'x'), no_end},
      {std::string(1000000, '\n'), no_end},
      {kGpio + std::string(1000000, '\n') + "x", "\"Syntax error in line1000003 : x\"\n= -1\n"},
      {kGpio + Times(1000000, "TCK=1\n"), no_end},
      {kGpio + Times(1000000, "TCK=1\n") + "END", "gpio 04 3f 10\n\"" + kEnd + "= 0\n"},
      {kGpio + Times(200, "REPT=1\n") + "TMS=1\n" + Times(200, "ENDR\n") + "END",
       "gpio 00 3f 08\ngpio 08 3f 01\ngpio 08 3f 10\n\"" + kEnd + "= 0\n"},
      // If the plug-in searched the block at each REPT, this case would take half an hour.
      {kGpio + "REPT=50\n" + Times(100000, "REPT=1\n") + "TMS=1\n" + Times(100001, "ENDR\n") +
           "END",
       Times(50, "gpio 08 3f 01\n") + "gpio 08 3f 10\n\"" + kEnd + "= 0\n"},
      {kGpio + Times(200, "REPT=9\n") + "END", "\"syntax error: rept & endr not match.\"\n= -1\n"},
      {kGpio + std::string("TCK=1\0junk\nEND", 14), "gpio 04 3f 10\n\"" + kEnd + "= 0\n"},
      {kGpio + "\x80\xFF\nEND", "\"Syntax error in line3 : \x80\xFF\"\n= -1\n"},
      {kGpio + "TCK=1\rEND\r", no_end},  // this is one line, and its value ends at "\r"
      // Sections without values are ignored.
      {Sections(100000, "\n"), "Script.\\n" + kEnd + "= 0\n"},
      // Lookups are linear, so ten times as many names would take a hundred times as long.
      {Sections(2000, kScan), "DR   0 bits out value 0x\\n" + kEnd + "= 0\n"},
      {"[" + name + "]\nIR=8\nDR=W,0", kEnd + "stdout \"" + name + " syntax error\\n\"\n= 0\n"},
      {"[A]\n" + name + "=1", missing},
      {"[A]\nIR=8," + std::string(2042, '0') + "\nDR=W,0", "value 0x\\n" + kEnd + "= 0\n"},
      {"[A]\rIR=8,1\rDR=W,0", missing},
      {"\xEF\xBB\xBF[A]" + kScan, "\xEF\xBB\xBF[A] in : Syntax error\\n" + kEnd + "= 0\n"},
      {"[\x80\xFF]\nIR=\x80\nDR=\xFF", kEnd + "stdout \"\x80\xFF syntax error\\n\"\n= 0\n"},
  };
  for (const auto& test : kCases) {
    FakeHost host;
    errno = EINTR;  // from an earlier call of the host; the reader must not retry because of it
    const std::string transcript = host.RunText(test.script);
    EXPECT_EQ(transcript.substr(transcript.size() - std::min(transcript.size(), test.end.size())),
              test.end)
        << test.script.substr(0, 80);
  }
}

TEST(HostileScript, HandsOverNoLengthBeyondTheArrays) {
  constexpr int kRefused = INT_MAX;
  const struct {
    const char* bits;
    int handed;
  } kCases[] = {
      {"0", 0},
      {"-1", -1},
      {"288", 288},
      {"289", kRefused},
      {"2147483647", kRefused},
      {"2147483648", INT_MIN},
      {"4294967584", 288},
      {"4294967585", kRefused},
  };
  for (const auto& test : kCases) {
    const std::string bits = test.bits;
    for (const auto& values : {"IR=" + bits + ",1\nDR=W,8,1", "IR=8,1\nDR=R," + bits + ",1"}) {
      for (const int extra : {0, 8}) {
        FakeHost host;
        host.results["query"] = {extra / 8};
        const std::string transcript = host.RunText("[A]\n" + values);
        const bool refused = test.handed == kRefused;
        const std::string sign =
            refused ? "A syntax error" : " " + std::to_string(test.handed + extra) + ":";
        EXPECT_NE(transcript.find(sign), std::string::npos) << transcript;
        EXPECT_EQ(transcript.find("insert") == std::string::npos, refused) << transcript;
      }
    }
  }
}

}  // namespace
