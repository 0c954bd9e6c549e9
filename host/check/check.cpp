#include "host/check/check.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "base/ini_file.h"
#include "base/text.h"
#include "host/system/memory_file.h"

namespace icehost {
namespace {

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
std::string Letters(std::string_view text) {
  std::string letters;
  for (const char ch : text) {
    const char upper = icescript::UpperCase(ch);
    if ((upper >= 'A' && upper <= 'Z') || upper == '_') letters += upper;
  }
  return letters;
}

// A slip of the pen or two.
constexpr std::size_t kNearTag = 2;

void WarnOfNearTag(const ScriptText& script, Problems& problems) {
  const ScriptText::Iterator at = script.WithText(script.begin());
  const ScriptLine first = *at;
  if (first.text.size() > 40) return;
  const bool marked = first.text.substr(0, 3) == "\xEF\xBB\xBF";
  for (const char* const tag : {"ORVEX_ICE_GPIO", "ZEVA_ICE_GPIO"}) {
    if (EditDistance(Letters(first.text), tag) > kNearTag) continue;
    problems.Warn(first.Start(),
                  fmt::format("this is not quite [{}]: the file is run as a JTAG script{}", tag,
                              marked ? " (a byte-order mark stands before it)" : ""));
    return;
  }
}

// A NUL ends a line for the readers, which pass over what stands behind it.
void ReportCutLines(const ScriptText& script, Problems& problems) {
  if (script.Content().find('\0') == std::string::npos) return;
  for (const ScriptLine line : script) {
    const std::size_t nul = line.raw.find('\0');
    if (nul >= line.raw.find('#')) continue;
    const std::string_view passed = line.raw.substr(nul);
    const std::size_t text = passed.find_first_not_of(std::string_view("\0\r ", 3));
    if (text == std::string_view::npos || passed[text] == '#') continue;
    problems.Error(line.Of(passed), "a NUL cuts the line here: the rest of it is not read");
  }
}

}  // namespace

Place CutAt(const ScriptLine& too_long) {
  return {too_long.number, icescript::INI_LINE_BUFFER};
}

Checked Check(const ScriptText& script) {
  Checked checked;
  ReportCutLines(script, checked.problems);
  if (IsGpioScript(script)) {
    CheckGpio(script, checked);
  } else {
    WarnOfNearTag(script, checked.problems);
    CheckJtag(script, checked);
  }
  return checked;
}

bool IsGpioScript(const ScriptText& script) {
  const ScriptText::Iterator first = script.WithText(script.begin());
  const MemoryFile file(first != script.end() ? first.Raw() : "");
  icescript::CIniFile ini{icescript::CString(file.Path())};
  return ini.ReadGpioFile() != icescript::GPIO_READ_NOT_GPIO;
}

}  // namespace icehost
