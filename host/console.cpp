#include "host/console.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <utility>

#include "host/system/errors.h"
#include "host/system/files.h"
#include "host/system/text.h"

namespace icehost {
namespace {

// The maximum total size, in bytes, of the messages kept for one round.
constexpr std::size_t kMostHeldBytes = 64U << 20U;

// Formats a time as "12 s", "12 min" or "12 h".
std::string Duration(double seconds) {
  if (seconds < 100) return fmt::format("{:.0f} s", seconds);
  if (seconds < 6000) return fmt::format("{:.0f} min", seconds / 60);
  return fmt::format("{:.0f} h", seconds / 3600);
}

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
  if (holds_) return Keep(true, message);
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
  if (holds_) return Keep(false, line);
  {
    const Rescue::Scope away(rescue_, Rescue::State::kAway);
    std::fflush(output_.User());
  }
  Close();
  if (shared_ && std::exchange(mid_line_, false)) StandardError() << '\n';
  ComplainLine(line);
}

void Console::Keep(bool message, const std::string& text) {
  held_bytes_ += sizeof(Held) + text.size();
  if (held_bytes_ > kMostHeldBytes) return held_.clear();
  if (message && !held_.empty() && held_.back().message) {
    held_.back().text += text;
  } else {
    held_.push_back({message, text});
  }
}

void Console::Hold(bool holds) {
  holds_ = holds;
  held_.clear();
  held_bytes_ = 0;
}

void Console::Release() {
  if (!std::exchange(holds_, false)) return;
  if (held_bytes_ > kMostHeldBytes) {
    Say("icehost: too many messages in this round: the first ones are not shown");
  }
  for (const Held& held : std::exchange(held_, {})) {
    if (held.message) {
      Show(held.text.c_str());
    } else {
      Say(held.text);
    }
  }
}

void Console::CountOperation() {
  ++operations_;
  if (progress_.IsDue()) progress_.Draw(ProgressText());
}

std::string Console::ProgressText() const {
  const auto done = static_cast<double>(operations_);
  const auto expected = static_cast<double>(expected_);
  const double rate = done / Seconds();
  std::string text = fmt::format("{}{} operations, {:.0f}/s", rounds_, operations_, rate);
  if (operations_ <= expected_) {
    text += fmt::format(", {:.0f} %, {} left", std::floor(100 * done / expected),
                        Duration((expected - done) / rate));
  }
  return text;
}

}  // namespace icehost
