#include "host/console.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "host/system/errors.h"
#include "host/system/files.h"
#include "host/system/text.h"

namespace icehost {
namespace {

[[noreturn]] void FailOutput() {
  throw IoError(fmt::format("standard output: {}", std::strerror(errno)));
}

}  // namespace

Console::Console(const Options& options, Rescue& rescue)
    : rescue_(rescue),
      quiet_(options.quiet),
      terminal_(isatty(fileno(output_.User())) != 0),
      shared_(IsSameFile(fileno(output_.User()), STDERR_FILENO)),
      progress_(options.show_progress) {}

void Console::Show(const char* message) {
  Close();
  if (*message == '\0') return;
  mid_line_ = !quiet_ && message[std::strlen(message) - 1] != '\n';
  if (quiet_) return;
  const std::string printable = terminal_ ? PrintableLines(message) : "";
  const Rescue::Scope away(rescue_, Rescue::State::kAway);
  if (std::fputs(terminal_ ? printable.c_str() : message, output_.User()) == EOF) FailOutput();
}

void Console::Flush() {
  const Rescue::Scope away(rescue_, Rescue::State::kAway);
  if (std::fflush(output_.User()) == EOF) FailOutput();
}

void Console::Say(const std::string& line) {
  {
    const Rescue::Scope away(rescue_, Rescue::State::kAway);
    std::fflush(output_.User());
  }
  Close();
  if (shared_ && std::exchange(mid_line_, false)) StandardError() << '\n';
  ComplainLine(line);
}

void Console::CountOperation() {
  ++operations_;
  if (!progress_.IsDue()) return;
  const double rate = static_cast<double>(operations_) / Seconds();
  progress_.Draw(fmt::format("{} operations, {:.0f}/s", operations_, rate));
}

}  // namespace icehost
