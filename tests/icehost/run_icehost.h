// icehost as a user starts it.
#ifndef ICESCRIPT_TESTS_RUN_ICEHOST_H_
#define ICESCRIPT_TESTS_RUN_ICEHOST_H_

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

struct Outcome {
  int status;
  std::string output;
};

// Runs a command in the source folder, with a shell's redirections.
inline Outcome RunShell(const std::string& command) {
  // NOLINTNEXTLINE(cert-env33-c): as a user would
  FILE* const pipe = popen(("cd " ICESCRIPT_SOURCE " && " + command).c_str(), "r");
  std::string output;
  std::array<char, 4096> buffer;
  std::size_t got = 0;
  while ((got = fread(buffer.data(), 1, buffer.size(), pipe)) > 0) {
    output.append(buffer.data(), got);
  }
  const int status = pclose(pipe);
  return {WEXITSTATUS(status), output};
}

inline Outcome RunIcehost(const std::string& arguments) {
  return RunShell(ICESCRIPT_ICEHOST " " + arguments);
}

#endif  // ICESCRIPT_TESTS_RUN_ICEHOST_H_
