#include <gtest/gtest.h>

#include <climits>

#include "base/ini_file.h"
#include "gpio/gpio_scr.h"
#include "tests/plugin/fake_host.h"

namespace {

const std::string kHead = "[ORVEX_ICE_GPIO]\nSTART\n";
const std::string kBanner = "\"Execute ORVEX_ICE_GPIO Script.\\n\"\n";
const std::string kEnd = "\"Execute ORVEX ICE Script End.\\n\"\n= 0\n";

// Runs a script with these lines after START. Returns the transcript between the START operation
// and the end banner, or the whole transcript if the script does not start.
std::string Operations(const std::string& lines) {
  FakeHost host;
  std::string transcript = host.RunText(kHead + lines);
  const std::string head = kBanner + "gpio 00 3f 08\n";
  const bool ran = transcript.substr(0, head.size()) == head;
  if (!ran) return transcript;
  EXPECT_EQ(transcript.substr(transcript.size() - kEnd.size()), kEnd) << lines;
  return transcript.substr(head.size(), transcript.size() - head.size() - kEnd.size());
}

TEST(GpioScript, TurnsLinesIntoOperations) {
  const struct {
    const char* lines;
    const char* operations;
  } kCases[] = {
      // These lines set every pin. Each line keeps the other pins as the previous line left them.
      {"NRST=1\nTRST=1\nTCK=1\nTMS=1\nTDI=1\nTDO=1\nEND",
       "gpio 01 3f 01\ngpio 03 3f 01\ngpio 07 3f 01\ngpio 0f 3f 01\ngpio 1f 3f 01\ngpio 3f 3f 01\n"
       "gpio 3f 3f 10\n"},
      {"GPIO_OUT=0x3F\nNRST=0\nTRST=0\nTCK=0\nTMS=0\nTDI=0\nTDO=0\nEND",
       "gpio 3f 3f 01\ngpio 3e 3f 01\ngpio 3c 3f 01\ngpio 38 3f 01\ngpio 30 3f 01\ngpio 20 3f 01\n"
       "gpio 00 3f 01\ngpio 00 3f 10\n"},
      {"NRST=1, TMS=1 ,TMS=0\r\n\n tdi = 1 \nEND", "gpio 01 3f 01\ngpio 11 3f 01\ngpio 11 3f 10\n"},
      // A word without "=" is its own value, and counts as the number 0.
      {"GPIO_OUT=0x3f\nNRST\nGPIO_OUT\nEND",
       "gpio 3f 3f 01\ngpio 3e 3f 01\ngpio 00 3f 01\ngpio 00 3f 10\n"},
      // Clearing any pin also clears the bits above the pins.
      {"GPIO_OUT=0x40\nTCK=1\nTCK=0\nEND",
       "gpio 40 3f 01\ngpio 44 3f 01\ngpio 00 3f 01\ngpio 00 3f 10\n"},
      // An empty value means the last number, even if that is from an earlier line.
      {"TCK=1\nTCK=0,TCK=1\nTMS=\nEND",
       "gpio 04 3f 01\ngpio 04 3f 01\ngpio 0c 3f 01\ngpio 0c 3f 10\n"},
      {"TCK=1\nPRINT=GPIO_IN\nTCK=\nEND",
       "gpio 04 3f 01\ngpio 04 3f 02\n\"error: Get GPIO_DATA_0 fail.\"\ngpio 00 3f 01\n"
       "gpio 00 3f 10\n"},
      {"TCK=1\nREPT=\nTMS=1\nENDR\nEND", "gpio 04 3f 01\ngpio 0c 3f 01\ngpio 0c 3f 10\n"},
      // NRST=1 drops the flags of the items before it on its line, but NRST=0 does not.
      {"GPIO_OE=0x3, NRST=1\nNRST=1, GPIO_OE=0x7\nPRINT=GPIO_IN,NRST=1\nEND",
       "gpio 01 03 01\ngpio 01 07 05\ngpio 01 07 01\ngpio 01 07 10\n"},
      {"GPIO_OE=0, NRST=0\nEND", "gpio 00 00 05\ngpio 00 00 10\n"},
      {"GPIO_OUT=0x100000001\nGPIO_OUT= 12z\nGPIO_OUT=0X10\nGPIO_OUT=-0x10\nGPIO_OUT=0x-5\n"
       "GPIO_OUT=\t+7\nGPIO_OUT=010\nGPIO_OUT=0x\nEND",
       "gpio 01 3f 01\ngpio 0c 3f 01\ngpio 00 3f 01\ngpio 00 3f 01\ngpio 00 3f 01\ngpio 07 3f 01\n"
       "gpio 0a 3f 01\ngpio 00 3f 01\ngpio 00 3f 10\n"},
      // END may be anywhere in a line and have a value. The plug-in ignores everything after it.
      {"TDO=1, END, junk\njunk", "gpio 20 3f 11\n"},
      {"GPIO_OE=1,end=0", "gpio 00 01 14\n"},
      // "#" starts a comment, which may be alone on its line.
      {"# none\n  # none\nTCK=1 # one\nEND", "gpio 04 3f 01\ngpio 04 3f 10\n"},
      // Each time that a block is reached, it runs as often as its count says.
      {"rept=2\nTCK=1\nREPT=3\nTCK=0\nENDR=9\nENDR\nREPT=1\nTMS=1\nENDR\nREPT=5\nENDR\nEND",
       "gpio 04 3f 01\ngpio 00 3f 01\ngpio 00 3f 01\ngpio 00 3f 01\ngpio 04 3f 01\ngpio 00 3f 01\n"
       "gpio 00 3f 01\ngpio 00 3f 01\ngpio 08 3f 01\ngpio 08 3f 10\n"},
      // Blocks without a pin operation are skipped.
      {"REPT=2\nTCK=1\nREPT=2147483647\nREPT=2147483647\nENDR\nREPT=9\nENDR\nENDR\nENDR\nEND",
       "gpio 04 3f 01\ngpio 04 3f 01\ngpio 04 3f 10\n"},
      {"REPT=2\nREPT=1\nREPT=2\nTCK=1\nENDR\nENDR\nENDR\nREPT=2147483647\nREPT=2147483647\nENDR\n"
       "ENDR\nEND",
       "gpio 04 3f 01\ngpio 04 3f 01\ngpio 04 3f 01\ngpio 04 3f 01\ngpio 04 3f 10\n"},
  };
  for (const auto& test : kCases) EXPECT_EQ(Operations(test.lines), test.operations) << test.lines;
}

TEST(GpioScript, RefusesWhatItCannotRun) {
  const std::string longest = std::string(2047, 'x');
  const struct {
    std::string lines;
    std::string message;
  } kCases[] = {
      {"NRST=1,\nEND", "Syntax error in line3 : "},
      {"TCK=1, FOO=1\nEND", "Syntax error in line3 :  FOO=1"},
      {"\n\n TCK=2 \nEND", "Syntax error in line5 : TCK=2"},
      {"TCK=\nEND", "Syntax error in line3 : TCK="},
      {"=1\nEND", "Syntax error in line3 : =1"},
      {"1GPIO_OUT=1\nEND", "Syntax error in line3 : 1GPIO_OUT=1"},
      {";\nEND", "Syntax error in line3 : ;"},
      {"\tEND", "Syntax error in line3 : \\tEND"},
      {"START\nEND", "Syntax error in line3 : START"},
      {"print=gpio_in\nEND", "Syntax error in line3 : print=gpio_in"},
      {"REPT=0\nEND", "Syntax error in line3 : REPT=0"},
      {"REPT\nEND", "Syntax error in line3 : REPT"},
      {"REPT=2, NRST=1\nEND", "Syntax error in line3 : REPT=2"},
      {"TCK=1,ENDR\nEND", "Syntax error in line3 : ENDR"},
      {"%s%n=1\nEND", "Syntax error in line3 : %s%n=1"},
      {longest, "Syntax error in line3 : " + longest.substr(0, 999)},
      {"GPIO_OUT=0xFFFFFFFF\nEND", "Syntax error in line3 : GPIO_OUT=0xFFFFFFFF.\\n"},
      {"GPIO_OUT=99999999999999999999\nEND",
       "Syntax error in line3 : GPIO_OUT=99999999999999999999.\\n"},
      {"GPIO_OUT=0x1FFFFFFFF\nEND", "Syntax error in line3 : GPIO_OUT=0x1FFFFFFFF.\\n"},
      {"GPIO_OE=\nEND", "Syntax error in line3 : GPIO_OE=.\\n"},
      {"TCK=1\nENDX=1", "Syntax error in line4 : ENDX=1"},
      {"TCK=1\n", "Syntax error, no end found"},
      {longest + "x\nEND", "Syntax error, no end found"},
      {"GPIO_OUT=-2\nEND", ""},
      {"GPIO_OUT=0x80000000\nEND", ""},
      {"GPIO_OE=-2\nEND", ",inifile.error"},
      {"TCK=1\nENDR\nENDR\nREPT=1\nEND", "error: rept & endr not match."},
      {"REPT=1\nREPT=2\nTCK=1\nEND", "syntax error: rept & endr not match."},
  };
  for (const auto& test : kCases) {
    EXPECT_EQ(Operations(test.lines), "\"" + test.message + "\"\n= -1\n") << test.lines;
  }
}

TEST(GpioScript, IsToldByItsHead) {
  const std::string no_end = "\"Syntax error, no end found\"\n= -1\n";
  const std::string no_start = "\"Syntax error: no start found.\"\n= -1\n";
  const std::string ran = kBanner + "gpio 00 3f 08\ngpio 00 3f 10\n" + kEnd;
  const std::string no_gpio = "\"Execute ORVEX_JTAG Script.\\n";  // follows an empty message
  const struct {
    const char* text;
    std::string transcript;
  } kCases[] = {
      {"", no_end},
      {"\n \r\n# x\n", no_end},
      {"[ORVEX_ICE_GPIO]", no_end},
      {"[ZEVA_ICE_GPIO]\nSTART\n", no_end},
      {" [ZEVA_ICE_GPIO] # tag\r\n\n start \nEND", ran},
      {"[ORVEX_ICE_GPIO]\nSTART 1\nEND", no_start},
      {"[ORVEX_ICE_GPIO]\nEND\n", no_start},
      {"[orvex_ice_gpio]\nSTART\nEND", no_gpio},
      {"[ORVEX_ICE_GPIO]\t\nSTART\nEND", no_gpio},
      {"\xEF\xBB\xBF[ORVEX_ICE_GPIO]\nSTART\nEND", no_gpio},
  };
  for (const auto& test : kCases) {
    FakeHost host;
    const std::string transcript = host.RunText(test.text);
    if (test.transcript == no_gpio) {
      EXPECT_EQ(transcript.substr(0, no_gpio.size() + 3), "\"\"\n" + no_gpio) << test.text;
    } else {
      EXPECT_EQ(transcript, test.transcript) << test.text;
    }
  }
}

TEST(GpioScript, ReportsReads) {
  FakeHost host;
  host.pin_reads = {0x1a, 0, 0xDEADBEEF};
  // The fourth read reports the value of the third again, because the host stores no new value.
  EXPECT_EQ(host.RunText(kHead + "REPT=4\nPRINT=GPIO_IN\nENDR\nPRINT=GPIO_IN\nEND"),
            kBanner +
                "gpio 00 3f 08\n"
                "gpio 00 3f 02\n\"GPIO_DATA_0 = 0x0000001a\\n\"\n"
                "gpio 00 3f 02\n\"error: Get GPIO_DATA_1 fail.\"\n"
                "gpio 00 3f 02\n\"GPIO_DATA_2 = 0xdeadbeef\\n\"\n"
                "gpio 00 3f 02\n\"GPIO_DATA_3 = 0xdeadbeef\\n\"\n"
                "gpio 00 3f 02\n\"error: Get GPIO_DATA_4 fail.\"\n"
                "gpio 00 3f 10\n" +
                kEnd);
}

TEST(GpioTable, AnswersBadAccess) {
  TempFile file("[ZEVA_ICE_GPIO]\nSTART\nTMS=1\nREPT=7\nENDR\nEND");
  icescript::CIniFile ini(file.Path());
  ASSERT_EQ(ini.ReadGpioFile(), 0);
  ASSERT_EQ(ini.GetGpioNum(), 5U);
  const int kLines[5][5] = {{0, 0x3F, 0x08, 0, 0},
                            {0x08, 0x3F, 0x01, 0, 0},
                            {0x08, 0x3F, 0, 1, 7},
                            {0x08, 0x3F, 0, 2, 0},
                            {0x08, 0x3F, 0x10, 0, 0}};
  for (int i = 0; i < 25; ++i) EXPECT_EQ(ini.GetGpioValue(i / 5, i % 5), kLines[i / 5][i % 5]) << i;
  EXPECT_STREQ(ini.error_msg, "");
  for (const int bad : {-1, 5, INT_MIN, INT_MAX}) {
    EXPECT_EQ(ini.GetGpioValue(bad, 0), -1);
    EXPECT_STREQ(ini.error_msg, "internal error: fail to get valule.");
    EXPECT_EQ(ini.GetGpioValue(0, bad), -1);
    EXPECT_STREQ(ini.error_msg, "internal error: invalid value access.");
  }
}

TEST(GpioList, PairsRepeatsByNesting) {
  TempFile file("[ZEVA_ICE_GPIO]\nSTART\nREPT=2\nREPT=3\nENDR\nENDR\nEND");
  icescript::GpioScr scr(file.Path(), [](const char*) { return 0; });
  ASSERT_EQ(scr.status, 0);
  ASSERT_EQ(scr.GetGpioOperatorDataCount(), 6);
  auto* const outer = scr.GetNextGpioOperatorData(scr.GetFirstGpioOperatorData());
  auto* const inner = scr.GetNextGpioOperatorData(outer);
  EXPECT_EQ(inner->partner, inner->next);
  EXPECT_EQ(outer->partner, inner->next->next);
  EXPECT_EQ(outer->partner->partner, outer);
  EXPECT_EQ(outer->partner->repeat_count, 2);
  EXPECT_EQ(inner->partner->repeat_count, 3);
  EXPECT_EQ(scr.GetNextGpioOperatorData(nullptr), nullptr);
  EXPECT_EQ(scr.error, nullptr);
}

TEST(GpioList, KeepsAStatus) {
  TempFile good("[ZEVA_ICE_GPIO]\nSTART\nEND"), cut("[ZEVA_ICE_GPIO]"), other("x");
  char nowhere[] = "/nowhere";
  const struct {
    char* path;
    int read;
    int kept;
  } kCases[] = {{good.Path(), 0, 0},
                {cut.Path(), -1, -1},
                {other.Path(), -5, -5},
                {nowhere, -10, -10},
                {nullptr, -10, -1}};
  for (const auto& test : kCases) {
    const icescript::GpioScr scr(test.path, [](const char*) { return 0; });
    EXPECT_EQ(scr.status, test.kept);
    EXPECT_STREQ(scr.error, test.path != nullptr ? nullptr : "No scr file specified.\n");
    EXPECT_EQ(icescript::CIniFile(test.path).ReadGpioFile(), test.read);
  }
}

}  // namespace
