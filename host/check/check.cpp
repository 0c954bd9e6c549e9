#include "host/check/check.h"

#include <fmt/format.h>

#include <string>

#include "base/ini_file.h"
#include "base/text.h"
#include "host/system/memory_file.h"
#include "host/system/near_word.h"

namespace icehost {
namespace {

// The letters of a line in upper case: what a lost bracket, a blank or a byte-order mark leaves.
std::string Letters(std::string_view text) {
  std::string letters;
  for (const char ch : text) {
    const char upper = icescript::UpperCase(ch);
    if ((upper >= 'A' && upper <= 'Z') || upper == '_') letters += upper;
  }
  return letters;
}

void WarnOfNearTag(const ScriptText& script, Problems& problems) {
  const ScriptText::Iterator at = script.WithText(script.begin());
  const ScriptLine first = *at;
  if (first.text.size() > 40) return;
  const bool marked = first.text.substr(0, 3) == "\xEF\xBB\xBF";
  for (const char* const tag : {"ORVEX_ICE_GPIO", "ZEVA_ICE_GPIO"}) {
    if (EditDistance(Letters(first.text), tag) > kNear) continue;
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

Problems Check(const ScriptText& script) {
  Problems problems;
  ReportCutLines(script, problems);
  if (IsGpioScript(script)) {
    CheckGpio(script, problems);
  } else {
    WarnOfNearTag(script, problems);
    CheckJtag(script, problems);
  }
  problems.Sort();
  return problems;
}

bool IsGpioScript(const ScriptText& script) {
  const ScriptText::Iterator first = script.WithText(script.begin());
  const MemoryFile file(first != script.end() ? first.Raw() : "");
  icescript::CIniFile ini{icescript::CString(file.Path())};
  return ini.ReadGpioFile() != icescript::GPIO_READ_NOT_GPIO;
}

}  // namespace icehost
