#include "host/check/tap_reset.h"

#include <string>
#include <string_view>

#include "base/text.h"
#include "host/check/hints.h"

namespace icehost {
namespace {

// Calls `take` with the text of each comment, trimmed and without "#", and an iterator to its line.
template <class Take>
void ForEachComment(const ScriptText& script, Take take) {
  for (auto at = script.begin(); at != script.end(); ++at) {
    const std::size_t sign = at.Raw().find('#');
    if (sign == std::string_view::npos) continue;
    take(icescript::TrimBlanks(at.Raw().substr(sign + 1)), at);
  }
}

bool IsTapReset(std::string_view comment) {
  return icescript::EqualsUpper(comment, "RESET TAP");
}

Place PlaceOfComment(const ScriptText::Iterator& line) {
  return {line.Number(), static_cast<int>(line.Raw().find('#')) + 1};
}

}  // namespace

bool FindTapReset(const ScriptText& script, Problems& problems) {
  const Words request = {"# reset TAP"};
  const std::size_t first_text = script.WithText(script.begin()).At();
  bool found = false;
  ForEachComment(script, [&](std::string_view comment, const ScriptText::Iterator& line) {
    if (IsTapReset(comment) && line.At() < first_text) {
      found = true;
    } else if (IsTapReset(comment)) {
      problems.Warn(PlaceOfComment(line),
                    "this comment has no effect: # reset TAP must be alone on a line above the "
                    "first section");
    } else if (const std::string meant = Nearest(std::string("# ").append(comment), request);
               !meant.empty()) {
      problems.Warn(PlaceOfComment(line), "this comment has no effect: " + DidYouMean(meant));
    }
  });
  return found;
}

void WarnOfTapReset(const ScriptText& script, Problems& problems) {
  ForEachComment(script, [&](std::string_view comment, const ScriptText::Iterator& line) {
    if (!IsTapReset(comment)) return;
    problems.Warn(PlaceOfComment(line),
                  "this comment has no effect: # reset TAP is for JTAG scripts");
  });
}

}  // namespace icehost
