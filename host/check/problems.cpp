#include "host/check/problems.h"

#include <fmt/color.h>

#include <algorithm>
#include <iterator>
#include <tuple>

#include "host/system/interrupt.h"
#include "host/system/text.h"

namespace icehost {
namespace {

// The part of a long line that is shown round the column.
constexpr std::size_t kShownBefore = 60;
constexpr std::size_t kShown = 100;

struct SeverityLook {
  const char* word;
  fmt::terminal_color colour;
};

const SeverityLook& LookOf(Severity severity) {
  static constexpr SeverityLook kLooks[] = {
      {"error", fmt::terminal_color::red},
      {"warning", fmt::terminal_color::magenta},
      {"note", fmt::terminal_color::cyan},
  };
  return kLooks[static_cast<std::size_t>(severity)];
}

fmt::text_style Bold(fmt::terminal_color colour, ReportStyle style) {
  return style.colour ? fmt::emphasis::bold | fg(colour) : fmt::text_style();
}

std::string Word(Severity severity, ReportStyle style) {
  const auto& [word, colour] = LookOf(severity);
  return fmt::format(Bold(colour, style), "{}:", word);
}

constexpr bool IsContinuation(char byte) {
  return (byte & 0xC0) == 0x80;
}

// A character of UTF-8 takes one column, however many bytes.
std::string BlanksBelow(const std::string& shown) {
  std::string blanks;
  for (const char ch : shown) {
    if (!IsContinuation(ch)) blanks += ch == '\t' ? '\t' : ' ';
  }
  return blanks;
}

// Finds lines of a text in one walk through it.
class LineFinder {
 public:
  explicit LineFinder(std::string_view text) : rest_(text) {}

  // The line of this number, which is not below the one before it.
  std::string_view Find(int number) {
    for (; number_ < number; ++number_) {
      line_ = rest_.substr(0, rest_.find('\n'));
      rest_.remove_prefix(std::min(line_.size() + 1, rest_.size()));
    }
    return line_;
  }

 private:
  std::string_view line_;  // of the number `number_`
  std::string_view rest_;  // the lines after it
  int number_ = 0;
};

// The line, and the caret below its column.
std::string Source(std::string_view raw, std::size_t column, const fmt::text_style& caret_style) {
  const std::size_t at = std::min(column - 1, raw.size());
  std::size_t first = at - std::min(at, kShownBefore);
  std::size_t end = std::min(raw.size(), first + kShown);
  // A character is not cut in two.
  while (first > 0 && first < at && IsContinuation(raw[first])) ++first;
  while (end > at && end < raw.size() && IsContinuation(raw[end])) --end;
  const std::string before = Printable(raw.substr(first, at - first));
  return fmt::format("{}{}\n{}{}\n", before, Printable(raw.substr(at, end - at)),
                     BlanksBelow(before), fmt::styled('^', caret_style));
}

}  // namespace

void Problems::Add(Problems more) {
  std::move(more.found_.begin(), more.found_.end(), std::back_inserter(found_));
}

long Problems::Count(Severity severity) const {
  return std::count_if(found_.begin(), found_.end(),
                       [&](const Problem& problem) { return problem.severity == severity; });
}

void Problems::Sort() {
  std::stable_sort(found_.begin(), found_.end(), [](const Problem& a, const Problem& b) {
    return std::tie(a.place.line, a.place.column) < std::tie(b.place.line, b.place.column);
  });
}

void Problems::Write(std::ostream& stream, std::string_view name, std::string_view content,
                     ReportStyle style) const {
  const std::string file = Printable(name);
  LineFinder lines(content);
  for (const Problem& problem : found_) {
    ThrowIfInterrupted();
    if (style.errors_only && problem.severity != Severity::kError && !problem.always) continue;
    const auto [line, column] = problem.place;
    const std::string source = Source(lines.Find(line), static_cast<std::size_t>(column),
                                      Bold(fmt::terminal_color::green, style));
    stream << fmt::format("{}:{}:{}: {} {}\n{}", file, line, column, Word(problem.severity, style),
                          Printable(problem.text), source);
  }
}

void Problems::WriteJson(std::ostream& stream) const {
  for (const Problem& problem : found_) {
    ThrowIfInterrupted();
    stream << fmt::format("{{\"problem\":\"{}\",\"line\":{},\"column\":{},\"text\":{}}}\n",
                          LookOf(problem.severity).word, problem.place.line, problem.place.column,
                          JsonText(problem.text));
  }
}

}  // namespace icehost
