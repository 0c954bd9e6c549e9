#include "host/check/ini_hints.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/text.h"
#include "host/check/near_words.h"
#include "host/check/remarks.h"

namespace icehost {
namespace {

using icescript::EqualsUpper;

bool Holds(const IniKeys& keys, std::string_view name) {
  return std::find(keys.begin(), keys.end(), name) != keys.end();
}

// What a key that is none, without its blanks, may be.
std::string KeyMeant(std::string_view name, const IniKeys& keys) {
  if (const auto slip = SlipIn(name); !slip.empty()) return std::string(slip);
  if (!name.empty() && name.front() == '[') return "a header ends with ]";
  if (Holds(KeysOf("CONTROL"), name)) return fmt::format("{} belongs to the section CONTROL", name);
  if (Holds(KeysOf(""), name)) return fmt::format("{} belongs to a scan, in another section", name);
  return DidYouMean(Nearest(name, keys));
}

// Of the keys that the plug-in does not know: what they say would be expected by nobody.
bool IsExpectationKey(std::string_view name) {
  const IniKeys& keys = KeysOf("");
  return std::any_of(keys.begin() + kKeysRead, keys.end(),
                     [name](std::string_view key) { return EqualsUpper(name, key); });
}

}  // namespace

std::string WithoutBlanks(std::string_view text) {
  std::string bare(text);
  bare.erase(
      std::remove_if(bare.begin(), bare.end(), [](char ch) { return ch == ' ' || ch == '\t'; }),
      bare.end());
  return bare;
}

std::string WhyNoIniLine(std::string_view text, const IniKeys& keys) {
  if (const auto slip = SlipIn(text); !slip.empty()) return std::string(slip);
  if (EqualsUpper(text, "START") || EqualsUpper(text, "END")) {
    return "a GPIO script begins with [ORVEX_ICE_GPIO]";
  }
  if (text.front() == '[' && text.find(']') != std::string_view::npos) {
    return "a header ends with its ]";
  }
  if (text.front() == '[') return "the ] is lost: " + DidYouMean(fmt::format("{}]", text));
  if (text.back() == ']') return "the [ is lost: " + DidYouMean(fmt::format("[{}", text));
  const std::string meant = WithEquals(text, keys);
  return meant.empty() ? "a line is [SECTION], KEY=VALUE or a comment behind #" : DidYouMean(meant);
}

void WarnOfKey(const ScriptLine& line, const IniKeys& keys, std::string_view name,
               Problems& problems) {
  const std::string bare = WithoutBlanks(name);
  if (IsExpectationKey(bare)) {
    problems.Error(line.Start(),
                   Holds(keys, "IR")
                       ? "this expects nothing: keys are in upper case, without blanks"
                       : "CONTROL reads nothing: this belongs to a scan");
  } else if (Holds(keys, bare)) {
    problems.Warn(line.Of(name.substr(name.find_first_of(" \t"))),
                  fmt::format("a blank here belongs to the name: this is not \"{}\"", bare));
  } else if (std::any_of(keys.begin(), keys.end(),
                         [&bare](std::string_view key) { return EqualsUpper(bare, key); })) {
    problems.Warn(line.Start(), "keys are in upper case: this one is ignored");
  } else {
    problems.Warn(line.Start(),
                  fmt::format("unknown key, ignored: a section like this has {}{}",
                              Listed(keys, "and"), InParentheses(KeyMeant(bare, keys))));
  }
}

void WarnOfLateTag(const ScriptLine& header, std::string_view name, Problems& problems) {
  if (name != "ORVEX_ICE_GPIO" && name != "ZEVA_ICE_GPIO") return;
  problems.Warn(header.Start(),
                "a GPIO script has this on its first line with text: this is a JTAG script");
}

}  // namespace icehost
