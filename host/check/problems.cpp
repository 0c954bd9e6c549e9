#include "host/check/problems.h"

#include <fmt/color.h>

#include <algorithm>
#include <tuple>

#include "host/system/interrupt.h"
#include "host/system/text.h"

namespace icehost {
namespace {

// The maximum number of bytes shown of a line: before the column of the problem, and in total.
constexpr std::size_t kShownBefore = 60;
constexpr std::size_t kShown = 100;
constexpr std::size_t kMoreLinesShown = 3;

struct SeverityLook {
  const char* word;
  fmt::terminal_color colour;
};

const SeverityLook& LookOf(Severity severity) {
  static constexpr SeverityLook kLooks[kSeverities] = {
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

bool IsBefore(Place a, Place b) {
  return std::tie(a.line, a.column) < std::tie(b.line, b.column);
}

void AddPlace(Problem& problem, Place place) {
  if (IsBefore(place, problem.place)) std::swap(place, problem.place);
  ++problem.more;
  std::vector<int>& lines = problem.more_lines;
  const auto at = std::lower_bound(lines.begin(), lines.end(), place.line);
  if (at == lines.end() || *at != place.line) lines.insert(at, place.line);
  if (lines.size() > kMoreLinesShown + 1) lines.pop_back();
}

std::string MorePlaces(const Problem& problem) {
  if (problem.more == 0) return "";
  const std::vector<int>& lines = problem.more_lines;
  const auto shown = static_cast<std::ptrdiff_t>(std::min(lines.size(), kMoreLinesShown));
  return fmt::format("  and {} more, on line{} {}{}\n", problem.more, shown > 1 ? "s" : "",
                     fmt::join(lines.begin(), lines.begin() + shown, ", "),
                     lines.size() > kMoreLinesShown ? ", ..." : "");
}

constexpr bool IsContinuation(char byte) {
  return (byte & 0xC0) == 0x80;
}

// Returns blanks as wide as `shown`. A UTF-8 character is one column wide, whatever its size.
std::string BlanksBelow(const std::string& shown) {
  std::string blanks;
  for (const char ch : shown) {
    if (!IsContinuation(ch)) blanks += ch == '\t' ? '\t' : ' ';
  }
  return blanks;
}

// Finds the lines of a text in a single pass.
class LineFinder {
 public:
  explicit LineFinder(std::string_view text) : rest_(text) {}

  // Returns a line. Its number must not be lower than in the previous call.
  std::string_view Find(int number) {
    for (; number_ < number; ++number_) {
      line_ = rest_.substr(0, rest_.find('\n'));
      rest_.remove_prefix(std::min(line_.size() + 1, rest_.size()));
    }
    return line_;
  }

 private:
  std::string_view line_;  // line `number_` of the text
  std::string_view rest_;  // the text after `line_`
  int number_ = 0;
};

// Returns the part of the line around the column, with a caret below the column.
std::string Source(std::string_view raw, std::size_t column, const fmt::text_style& caret_style) {
  const std::size_t at = std::min(column - 1, raw.size());
  std::size_t first = at - std::min(at, kShownBefore);
  std::size_t end = std::min(raw.size(), first + kShown);
  // The cuts must not be inside a UTF-8 character.
  while (first > 0 && first < at && IsContinuation(raw[first])) ++first;
  while (end > at && end < raw.size() && IsContinuation(raw[end])) --end;
  const std::string before = Printable(raw.substr(first, at - first));
  return fmt::format("{}{}\n{}{}\n", before, Printable(raw.substr(at, end - at)),
                     BlanksBelow(before), fmt::styled('^', caret_style));
}

}  // namespace

void Problems::Add(Problems more) {
  for (Problem& problem : more.found_) Take(std::move(problem));
}

void Problems::Take(Problem problem) {
  Count& count = counts_[static_cast<std::size_t>(problem.severity)];
  ++count.found;
  if (keeping_.grouped) {
    const auto same = std::find_if(found_.begin(), found_.end(), [&](const Problem& known) {
      return known.severity == problem.severity && known.text == problem.text;
    });
    if (same != found_.end()) return AddPlace(*same, problem.place);
  }
  count.lost = count.kept == keeping_.most;
  if (count.lost) return;
  ++count.kept;
  found_.push_back(std::move(problem));
}

void Problems::Sort() {
  std::stable_sort(found_.begin(), found_.end(),
                   [](const Problem& a, const Problem& b) { return IsBefore(a.place, b.place); });
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
    stream << fmt::format("{}:{}:{}: {} {}\n{}{}", file, line, column,
                          Word(problem.severity, style), Printable(problem.text), source,
                          MorePlaces(problem));
  }
  WriteLost(stream, file, style);
}

void Problems::WriteLost(std::ostream& stream, std::string_view file, ReportStyle style) const {
  for (const Severity severity : {Severity::kError, Severity::kWarning, Severity::kNote}) {
    const bool is_error = severity == Severity::kError;
    if (!CountOf(severity).lost || (style.errors_only && !is_error)) continue;
    stream << fmt::format(
        "{}: {} more than {}{} {}s: {}\n", file, Word(severity, style), keeping_.most,
        keeping_.grouped ? " different" : "", LookOf(severity).word,
        is_error ? "the rest of the file is not read" : "the others are not shown");
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
