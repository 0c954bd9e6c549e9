#include "host/check/near_tag.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>

#include "base/text.h"
#include "host/check/near_words.h"
#include "host/check/remarks.h"

namespace icehost {
namespace {

const Words& Tags() {
  static const Words tags = {"ORVEX_ICE_GPIO", "ZEVA_ICE_GPIO"};
  return tags;
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

// Why a line that has the letters of the tag, or nearly so, is not the tag.
std::string WhyNoTag(std::string_view text, const std::string& tag) {
  if (const auto slip = SlipIn(text); !slip.empty()) return std::string(slip);
  if (text.front() != '[' || text.find(']') == std::string_view::npos) return "a bracket is lost";
  if (text.back() != ']') return "it stands alone on its line";
  if (icescript::EqualsUpper(text, "[" + tag + "]")) return "tags are in upper case";
  if (Letters(text) == tag) return "nothing but the name stands between the brackets";
  return {};
}

}  // namespace

void WarnOfNearTag(const ScriptText& script, Problems& problems) {
  const ScriptLine first = *script.WithText(script.begin());
  const std::string_view name =
      first.text.substr(0, std::min(FindForeignComment(first.text), first.text.find(']')));
  // Brackets, blanks and the like may be as many again.
  if (name.size() > 40) return;
  const std::string tag = Nearest(Letters(name), Tags());
  if (tag.empty()) return;
  problems.Warn(first.Start(),
                fmt::format("this is not quite [{}]: the file is run as a JTAG script{}", tag,
                            InParentheses(WhyNoTag(first.text, tag))));
}

}  // namespace icehost
