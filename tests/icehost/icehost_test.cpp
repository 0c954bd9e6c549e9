// Runs icehost as a user does, and checks its exit status and its output.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string_view>
#include <thread>

#include "host/system/interrupt.h"
#include "host/system/text.h"
#include "tests/icehost/run_icehost.h"

namespace {

const std::string kGolden = ICESCRIPT_SOURCE "/tests/golden/";

// If ICESCRIPT_UPDATE_GOLDEN is set, the tests write the golden files instead of reading them.
const bool kUpdate = std::getenv("ICESCRIPT_UPDATE_GOLDEN") != nullptr;

// Runs the commands in tests/golden/commands.txt, and compares their output with golden files.
TEST(Icehost, RunsAsGolden) {
  std::ifstream rows(kGolden + "commands.txt");
  ASSERT_TRUE(rows.is_open());
  for (std::string row; std::getline(rows, row);) {
    if (row[0] == '#') continue;
    std::istringstream fields(row);
    int status = 0;
    std::string name, command;
    std::getline(fields >> status >> name, command);
    const Outcome outcome = RunShell(command);
    EXPECT_EQ(outcome.status, status) << command;
    const std::string path = kGolden + name + ".txt";
    if (kUpdate) std::ofstream(path) << outcome.output;
    std::ostringstream golden;
    golden << std::ifstream(path).rdbuf();
    EXPECT_EQ(outcome.output, golden.str()) << command;
  }
}

// A session file contains short commands. Each "$ COMMAND" is followed by its output and messages,
// and then by "= STATUS".
TEST(Icehost, AnswersAsInSessions) {
  const std::string surroundings =
      "exec 2>&1; MODULE=" ICESCRIPT_MODULE " FAULTY_PLUGIN=" ICESCRIPT_FAULTY_PLUGIN "; ";
  for (const std::string name :
       {"command_line", "expectations", "faults", "lines", "outputs", "peers", "svf"}) {
    const std::string path = kGolden + name + ".session";
    std::ifstream session(path);
    ASSERT_TRUE(session.is_open()) << path;
    std::string updated;
    for (std::string line, answer; std::getline(session, line); answer.clear()) {
      updated += line + "\n";
      if (line[0] == '#') continue;
      ASSERT_EQ(line.substr(0, 2), "$ ") << path;
      const Outcome outcome = RunShell(surroundings + line.substr(2));
      const std::string got = outcome.output + "= " + std::to_string(outcome.status) + "\n";
      updated += got;
      const std::string command = line;
      while (line.rfind("= ", 0) != 0 && std::getline(session, line)) answer += line + "\n";
      EXPECT_TRUE(kUpdate || got == answer) << command << "\n" << got << "Expected:\n" << answer;
    }
    if (kUpdate) std::ofstream(path) << updated;
  }
}

// Control characters are replaced, and each character keeps its column.
TEST(Icehost, PrintsNoControls) {
  const struct {
    std::string_view text;
    const char* printable;
  } kTexts[] = {
      {std::string_view("a\0b\t\x1b[2J\x7f\r~", 11), "a b\t [2J  ~"},
      {"\xc3\xa9\xe2\x82\xac\xf0\x9f\x94\xa7", "\xc3\xa9\xe2\x82\xac\xf0\x9f\x94\xa7"},
      {"\xc2\x80\xc2\x9b\xc2\x9f\xc2\xa0", "   \xc2\xa0"},  // C1 controls, a no-break space
      {"\x80\x9b\xbf\xc3(\xc3",
       "???"
       "?(?"},                                                // stray and missing bytes
      {"\xc0\x9b\xe0\x82\x9b\xf0\x80\x82\x9b", "?????????"},  // overlong forms
      {"\x81\x80\x80\x80\xc1\x80\x80\x80\xf9\x80\x80\x80", "????????????"},  // no first bytes
      {"\xc1\xbf\xe0\x9f\xbf\xf0\x8f\xbf\xbf", "?????????"},  // the highest overlong forms
      {"\xed\xa0\x80\xf4\x90\x80\x80\xff", "????????"},       // not in Unicode
      {"\xef\xbf\xbf\xf4\x8f\xbf\xbf", "\xef\xbf\xbf\xf4\x8f\xbf\xbf"},  // U+FFFF, U+10FFFF
      {"\xe2\x80\xa7\xe2\x80\xa8\xe2\x80\xae\xe2\x80\xac\xe2\x80\xaf",
       "\xe2\x80\xa7   \xe2\x80\xaf"},
  };
  for (const auto& text : kTexts) EXPECT_EQ(icehost::Printable(text.text), text.printable);
}

void BeInterruptedAtWork() {
  using icehost::Rescue;
  icehost::CatchInterrupts();
  Rescue rescue(Rescue::State::kAway, [] { std::fputs("completed", stderr); });
  {
    const Rescue::Scope scope(rescue, Rescue::State::kWorking);
    kill(getpid(), SIGINT);
    std::this_thread::sleep_for(std::chrono::milliseconds(1200));
    std::fputs("worked, ", stderr);
  }
  std::this_thread::sleep_for(std::chrono::seconds(10));
}

// A Rescue completes the outputs only when the main thread is not working on them.
TEST(Rescue, WaitsForTheMainThread) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(BeInterruptedAtWork(), testing::ExitedWithCode(130), "worked, completed");
}

}  // namespace
