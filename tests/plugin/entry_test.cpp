// ImplementScr: behaviour that does not depend on the script.
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/plugin/fake_host.h"

namespace {

constexpr char kGpio[] = "[ORVEX_ICE_GPIO]\nSTART\nREPT=2\nPRINT=GPIO_IN\nENDR\nEND";

TEST(Entry, RefusesWhatItCannotOpen) {
  FakeHost no_path;
  EXPECT_EQ(no_path.RunFile(nullptr), "= -1\n");
  FakeHost no_file;
  EXPECT_EQ(no_file.RunFile("/nowhere/%s"),
            "\"Unable to open Script file: /nowhere/%s.\\n\"\n= -1\n");
  FakeHost folder;
  EXPECT_EQ(folder.RunFile("/"), "\"Syntax error, no end found\"\n= -1\n");
}

TEST(Entry, NumbersReadsAcrossCalls) {
  TempFile script(kGpio);
  FakeHost host;
  host.pin_reads = {1, 2, 3};
  const Module module;
  EXPECT_EQ(module.entry(&host, script.Path(), [](const char*) { return 0; }), 0);
  static std::string last;
  const auto keep = [](const char* text) {
    if (std::string(text).find("GPIO_DATA") != std::string::npos) last = text;
    return 0;
  };
  EXPECT_EQ(module.entry(&host, script.Path(), keep), 0);
  EXPECT_EQ(last, "GPIO_DATA_3 = 0x00000003\n");
}

// Text on standard output must appear even if the host exits without flushing it.
TEST(Entry, FlushesStandardOutput) {
  TempFile script("[A]\nIR=1\nDR=W,0\n");
  const Module module;
  const auto run = [&] {
    dup2(STDERR_FILENO, STDOUT_FILENO);
    module.entry(nullptr, script.Path(), [](const char* text) -> int {
      if (std::string(text).find("End") != std::string::npos) _exit(0);
      return 0;
    });
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "A syntax error");
}

}  // namespace
