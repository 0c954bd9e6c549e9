#include "host/check/check.h"

#include "base/ini_file.h"
#include "host/check/near_tag.h"
#include "host/system/files.h"

namespace icehost {
namespace {

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
  checked.problems.Sort();
  return checked;
}

bool IsGpioScript(const ScriptText& script) {
  const ScriptText::Iterator first = script.WithText(script.begin());
  const MemoryFile file(first != script.end() ? first.Raw() : "");
  icescript::CIniFile ini{icescript::CString(file.Path())};
  return ini.ReadGpioFile() != icescript::GPIO_READ_NOT_GPIO;
}

}  // namespace icehost
