// icehost as a user runs it: command line, exit status, standard output against a golden file.
// With ICESCRIPT_UPDATE_GOLDEN set the golden files are written anew instead.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

struct Outcome {
  int status;
  std::string output;
};

Outcome RunShell(const std::string& command) {
  FILE* const pipe = popen(command.c_str(), "r");  // NOLINT(cert-env33-c): as a user would
  std::string output;
  std::array<char, 4096> buffer;
  std::size_t got = 0;
  while ((got = fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
    output.append(buffer.data(), got);
  const int status = pclose(pipe);
  return {WEXITSTATUS(status), output};
}

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
      {"run examples/reset_pulse.gpio", 0, "reset_pulse.gpio"},
      {"run examples/read_idcode.gpio examples/two_wire.ini examples/read_idcode.ini", 0,
       "several"},
      {"run tests/scripts/long_scans.ini", 0, "long_scans"},
      {"run tests/scripts/no_such_file examples/reset.ini 2>&1", 1, "no_such_file"},
      {"2>/dev/null", 2, "empty"},
      {"run 2>/dev/null", 2, "empty"},
      {"play x 2>/dev/null", 2, "empty"},
      {"run --plugin /dev/null examples/reset.ini 2>/dev/null", 3, "empty"},
  };
  const bool update = std::getenv("ICESCRIPT_UPDATE_GOLDEN") != nullptr;
  for (const auto& run : kRuns) {
    const Outcome outcome =
        RunShell("cd " ICESCRIPT_SOURCE " && " ICESCRIPT_ICEHOST " " + std::string(run.arguments));
    EXPECT_EQ(outcome.status, run.status) << run.arguments;
    const std::string path = ICESCRIPT_SOURCE "/tests/golden/" + std::string(run.golden) + ".txt";
    if (update) std::ofstream(path) << outcome.output;
    std::stringstream golden;
    golden << std::ifstream(path).rdbuf();
    EXPECT_EQ(outcome.output, golden.str()) << run.arguments;
  }
}

}  // namespace
