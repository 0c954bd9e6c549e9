#include "host/check/check.h"

#include <algorithm>
#include <utility>

#include "base/ini_file.h"
#include "base/text.h"
#include "host/system/memory_file.h"
#include "host/system/printable.h"

namespace icehost {
namespace {

// The part of a long line that is shown round the column.
constexpr int kShownBefore = 60;
constexpr int kShown = 100;

void WriteSource(std::ostream& stream, const std::string& raw, int column) {
  const int first = std::max(0, column - 1 - kShownBefore);
  const std::string shown =
      Printable(raw.substr(std::min(raw.size(), static_cast<std::size_t>(first)), kShown));
  std::string before = shown.substr(0, static_cast<std::size_t>(column - 1 - first));
  // A character of UTF-8 takes one column, however many bytes.
  before.erase(
      std::remove_if(before.begin(), before.end(), [](char ch) { return (ch & 0xC0) == 0x80; }),
      before.end());
  std::transform(before.begin(), before.end(), before.begin(),
                 [](char ch) { return ch == '\t' ? '\t' : ' '; });
  stream << shown << '\n' << before << "^\n";
}

// Number of single edits that make one text of another.
std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i);
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t change = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = std::exchange(row[j], std::min({change, row[j] + 1, row[j - 1] + 1}));
    }
  }
  return row[b.size()];
}

// The letters of a line in upper case: what a lost bracket, a blank or a byte-order mark leaves.
std::string Letters(const std::string& text) {
  std::string letters;
  for (const char ch : icescript::CString(text).MakeUpper()) {
    if ((ch >= 'A' && ch <= 'Z') || ch == '_') letters += ch;
  }
  return letters;
}

// A slip of the pen or two.
constexpr std::size_t kNearTag = 2;

void WarnOfNearTag(const ScriptText& script, Problems& problems) {
  const auto& lines = script.Lines();
  const auto first = std::find_if_not(lines.begin(), lines.end(),
                                      [](const ScriptLine& line) { return line.Blank(); });
  if (first == lines.end() || first->text.size() > 40) return;
  const bool marked = first->text.compare(0, 3, "\xEF\xBB\xBF") == 0;
  for (const std::string tag : {"ORVEX_ICE_GPIO", "ZEVA_ICE_GPIO"}) {
    if (EditDistance(Letters(first->text), tag) > kNearTag) continue;
    problems.Warn(*first, first->column,
                  "this is not quite [" + tag + "]: the file is run as a JTAG script" +
                      (marked ? " (a byte-order mark stands before it)" : ""));
    return;
  }
}

}  // namespace

bool Problems::HasErrors() const {
  return std::any_of(found_.begin(), found_.end(),
                     [](const Problem& problem) { return problem.error; });
}

void Problems::Write(std::ostream& stream, const std::string& file, bool errors_only) const {
  std::vector<Problem> sorted = found_;
  std::stable_sort(sorted.begin(), sorted.end(), [](const Problem& a, const Problem& b) {
    return std::make_pair(a.line->number, a.column) < std::make_pair(b.line->number, b.column);
  });
  for (const Problem& problem : sorted) {
    if (errors_only && !problem.error) continue;
    stream << file << ':' << problem.line->number << ':' << problem.column << ": "
           << (problem.error ? "error: " : "warning: ") << Printable(problem.text) << '\n';
    WriteSource(stream, problem.line->raw, problem.column);
  }
}

Problems Check(const ScriptText& script) {
  Problems problems;
  if (IsGpioScript(script)) {
    CheckGpio(script, problems);
  } else {
    WarnOfNearTag(script, problems);
    CheckJtag(script, problems);
  }
  if (const ScriptLine* const line = script.TooLong()) {
    problems.Warn(*line, icescript::INI_LINE_BUFFER,
                  "the line is too long: the plug-in reads neither it nor anything after it");
  }
  return problems;
}

bool IsGpioScript(const ScriptText& script) {
  const MemoryFile file(script.Content());
  icescript::CIniFile ini{icescript::CString(file.Path())};
  return ini.ReadGpioFile() != icescript::GPIO_READ_NOT_GPIO;
}

}  // namespace icehost
