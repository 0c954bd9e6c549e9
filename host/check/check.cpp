#include "host/check/check.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>

#include "base/text.h"
#include "host/check/file_kinds.h"
#include "host/check/hints.h"

namespace icehost {
namespace {

// Reports text after a NUL byte, which ends the line for the plug-in.
void ReportCutLines(const ScriptText& script, Problems& problems) {
  if (script.Content().find('\0') == std::string::npos) return;
  for (const ScriptLine line : script) {
    const std::size_t nul = line.raw.find('\0');
    if (nul >= line.raw.find('#')) continue;
    const std::string_view skipped = line.raw.substr(nul);
    const std::size_t text = skipped.find_first_not_of(std::string_view("\0\r ", 3));
    if (text == std::string_view::npos || skipped[text] == '#') continue;
    problems.Error(line.Of(skipped), "NUL byte: the plug-in ignores the rest of the line");
  }
}

// A script without text counts as a GPIO script, because the plug-in reports a missing END for it.
bool IsGpioScript(const ScriptText& script) {
  return !script.HasText() || icescript::IsSectionTag((*script.WithText(script.begin())).text);
}

// Returns only the letters and underscores of a text, in upper case.
std::string Letters(std::string_view text) {
  std::string letters;
  for (const char ch : text) {
    const char upper = icescript::UpperCase(ch);
    if ((upper >= 'A' && upper <= 'Z') || upper == '_') letters += upper;
  }
  return letters;
}

// Explains why a line that resembles the tag is not the tag. Returns "" if it finds no reason.
std::string WhyNotTag(std::string_view text, const std::string& tag) {
  if (const auto slip = SlipIn(text); !slip.empty()) return std::string(slip);
  if (text.front() != '[' || text.find(']') == std::string_view::npos) {
    return "a bracket is missing";
  }
  if (text.back() != ']') return "the tag must be alone on its line";
  if (icescript::EqualsUpper(text, "[" + tag + "]")) return "the tag must be in upper case";
  if (Letters(text) == tag) return "only the name may be between the brackets";
  return {};
}

// Warns if the first line of a JTAG script looks like the tag of a GPIO script.
void WarnOfNearTag(const ScriptText& script, Problems& problems) {
  const ScriptLine first = *script.WithText(script.begin());
  const std::string_view name =
      first.text.substr(0, std::min(FindForeignComment(first.text), first.text.find(']')));
  // Even a tag with many extra brackets and blanks is shorter than this.
  if (name.size() > 40) return;
  const std::string tag = Nearest(Letters(name), {"ORVEX_ICE_GPIO", "ZEVA_ICE_GPIO"});
  if (tag.empty()) return;
  problems.Warn(first.Start(),
                fmt::format("this is not exactly [{}], so the file is run as a JTAG script{}", tag,
                            InParentheses(WhyNotTag(first.text, tag))));
}

// If a script with errors is actually a file of another kind, reports only which kind it is.
void ReportWrongKind(const ScriptText& script, Problems& problems) {
  if (!problems.HasErrors()) return;
  const auto wrong = FindWrongKind(script.Content(), FileUse::kScript);
  if (!wrong.has_value()) return;
  problems = {};
  problems.Error(wrong->place, wrong->text);
}

}  // namespace

CheckResult CheckScript(const ScriptText& script) {
  CheckResult result;
  ReportCutLines(script, result.problems);
  if (IsGpioScript(script)) {
    CheckGpio(script, result);
  } else {
    WarnOfNearTag(script, result.problems);
    CheckJtag(script, result);
  }
  result.problems.Sort();
  ReportWrongKind(script, result.problems);
  return result;
}

}  // namespace icehost
