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

// The learned script passes. New values have the form of the old values, and nothing else changes.
TEST(Expectations, AreLearned) {
  const struct {
    std::string script;
    std::string learned;
    std::string stale{};
  } kScripts[] = {
      {"# head\n" + Idcode("\n[W] # a write\nIR=5,2\nDR=W,8,ff"),
       "# head\n" + Idcode("TDO=1,10,e5,1c\n\n[W] # a write\nIR=5,2\nDR=W,8,ff")},
      {Idcode("TDO=1,1,1,1  # met\nMASK=ff,0,0,0\nIR_TDO=1f # too\n[B]\nIR=5,0x1\nDR=R,8,0 # last"),
       Idcode("TDO=1,1,1,1  # met\nMASK=ff,0,0,0\nIR_TDO=01 # too\n[B]\nIR=5,0x1\nDR=R,8,0 # last\n"
              "TDO=0x1")},
      {"[A]\r\nDR=R,8,0\r\nIR=5,1\r\n", "[A]\r\nDR=R,8,0\r\nTDO=1\r\nIR=5,1\r\n"},
      {"[A]\nIR=5,0x001\nDR=R,8,0x000\n", "[A]\nIR=5,0x001\nDR=R,8,0x000\nTDO=0x01\n"},
      {"[A]\n  IR=5,1\n  DR=R,32\n [B]\n IR=5,0X01\n DR=R,32, 0X0F, 0, 0, 0\n",
       "[A]\n  IR=5,1\n  DR=R,32\n  TDO=1,10,e5,1c\n [B]\n IR=5,0X01\n DR=R,32, 0X0F, 0, 0, 0\n"
       " TDO=0X01, 0X10, 0XE5, 0X1C\n"},
      {Idcode("TDO= 0x01 , 0x2,0,0x3c # id=3C00_0201 0x01 0201\n"),
       Idcode("TDO= 0x1, 0x10, 0xe5, 0x1c # id=3C00_0201 0x01 0201\n"),
       "4:26: warning: the comment still says id=3C00_0201, but 0x1ce51001 was read"},
      {Gpio("PRINT=GPIO_IN\r\nREPT=2\nPRINT=GPIO_IN # twice\nNRST=1\nENDR\n"
            "NRST=0,PRINT=GPIO_IN  # expect TMS=0, nrst = 1 # TMS=0 NRST=0 TCK=0\n"),
       Gpio("PRINT=GPIO_IN  # expect 0x3e/0x3f\r\nREPT=2\n"
            "PRINT=GPIO_IN # expect 0x3e/0x3e # twice\nNRST=1\nENDR\n"
            "NRST=0,PRINT=GPIO_IN  # expect TMS=1, nrst = 0 # TMS=0 NRST=0 TCK=0\n"),
       "9:50: warning: the comment still says TMS=0, but 0x3e was read"},
      {Gpio("REPT=2\nPRINT=GPIO_IN # expect 60  # 0x3C\nNRST=1\nENDR\nPRINT=GPIO_IN # expect 0x0/ "
            "33\n"
            "REPT=2\nPRINT=GPIO_IN # expect TMS=1,NRST=0, TDO=1\nNRST=0\nENDR\n"
            "NRST=0,PRINT=GPIO_IN # expect TRST=1,TMS=1\n"),
       Gpio("REPT=2\nPRINT=GPIO_IN # expect 62/62  # 0x3C\nNRST=1\nENDR\nPRINT=GPIO_IN # expect "
            "0x21/ 33\n"
            "REPT=2\nPRINT=GPIO_IN # expect TMS=1, TDO=1\nNRST=0\nENDR\n"
            "NRST=0,PRINT=GPIO_IN # expect TRST=1,TMS=1\n"),
       "5:30: warning: the comment still says 0x3C, but 0x3e was read"},
  };
  for (const auto& run : kScripts) {
    const TempFile file(run.script);
    const TempFile learned("");
    const Outcome outcome =
        RunIcehost("run -q --learn " + learned.Name() + " " + file.Name() + " 2>&1");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, run.stale.empty() ? "" : file.Name() + ":" + run.stale + "\n");
    EXPECT_EQ(learned.Text(), run.learned);
    EXPECT_EQ(RunIcehost("run --learn - " + file.Name()).output, run.learned);
    EXPECT_EQ(file.Text(), run.script);
    EXPECT_EQ(RunIcehost("run -q " + learned.Name()).status, 0) << run.learned;
  }
  // If the learned script would not pass, or the run fails, the file does not change.
  const TempFile old("as it was");
  for (const TempFile& refused : {TempFile(Gpio("PRINT=GPIO_IN #" + std::string(2025, 'x') + "\n")),
                                  TempFile(Idcode("TDO=0,0,0,0 # " + std::string(2033, 'x'))),
                                  TempFile("[CONTROL]\nCDI=2\n" + Idcode("TDO=1"))}) {
    EXPECT_EQ(RunIcehost("run -q --learn " + old.Name() + " " + refused.Name() + " 2>&1").status,
              1);
    EXPECT_EQ(old.Text(), "as it was");
  }
  const TempFile file(Idcode(""));
  const std::string& name = file.Name();
  const std::string both = old.Name() + " " + name + " examples/reset.ini";
  for (const auto& [arguments, message] : std::map<std::string, std::string>{
           {"- " + name + " >>" + name, "icehost: --learn: - is also a script\n"},
           {name + " " + name, "icehost: --learn: " + name + " is also a script\n"},
           {both + " --ir-length 4",
            "--learn: accepts only one script\nRun with --help for more information.\n"}}) {
    EXPECT_EQ(RunIcehost("run -q 2>&1 --learn " + arguments).output, message);
  }
  EXPECT_EQ(old.Text(), "as it was");
}

}  // namespace
