#ifndef ICESCRIPT_TESTS_RUN_ICEHOST_H_
#define ICESCRIPT_TESTS_RUN_ICEHOST_H_

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

#include "tests/temp_file.h"

struct Outcome {
  int status;
  std::string output;
};

// Runs a shell command in the source folder, with icehost on the PATH. Captures standard output.
inline Outcome RunShell(const std::string& command) {
  const std::string place = "cd " ICESCRIPT_SOURCE " && PATH=" ICESCRIPT_PROGRAMS ":$PATH && ";
  // NOLINTNEXTLINE(cert-env33-c): users run icehost in a shell, too
  FILE* const pipe = popen((place + command).c_str(), "r");
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
  return RunShell("icehost " + arguments);
}

// Runs icehost with this text on standard input.
inline Outcome RunOn(const std::string& text, const std::string& arguments) {
  const TempFile file(text);
  return RunIcehost(arguments + " <" + file.Name());
}

#endif  // ICESCRIPT_TESTS_RUN_ICEHOST_H_
