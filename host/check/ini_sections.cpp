#include "host/check/ini_sections.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

#include "base/text.h"

namespace icehost {
namespace {

using icescript::EqualsUpper;

// ---- Lines that were probably meant to be something else

bool Holds(const IniKeys& keys, std::string_view name) {
  return std::find(keys.begin(), keys.end(), name) != keys.end();
}

// Returns a hint about the key that was probably meant. `name` is an unknown key without blanks.
std::string KeyMeant(std::string_view name, const IniKeys& keys) {
  if (const auto slip = SlipIn(name); !slip.empty()) return std::string(slip);
  if (!name.empty() && name.front() == '[') return "a section header must end with ]";
  if (Holds(KeysOf("CONTROL"), name)) return fmt::format("{} belongs in the CONTROL section", name);
  if (Holds(KeysOf(""), name)) return fmt::format("{} belongs in a scan section", name);
  return DidYouMean(Nearest(name, keys));
}

std::string Core(std::string_view text) {
  std::string core;
  std::copy_if(text.begin(), text.end(), std::back_inserter(core),
               [](unsigned char ch) { return ch < 0x80 && (std::isalnum(ch) != 0 || ch == '_'); });
  return core;
}

// Returns the key of an expectation that `name` was probably meant to be, or an empty text.
std::string ExpectationKeyMeant(std::string_view name) {
  const IniKeys& all = KeysOf("");
  std::string core = Core(name);
  if (EqualsUpper(core.substr(0, 3), "DR_")) core.erase(0, 3);
  return Nearest(core, IniKeys(all.begin() + kKeysRead, all.end()));
}

std::string WithoutBlanks(std::string_view text) {
  std::string bare(text);
  bare.erase(
      std::remove_if(bare.begin(), bare.end(), [](char ch) { return ch == ' ' || ch == '\t'; }),
      bare.end());
  return bare;
}

// Explains why a line is neither a header nor a value. `keys` are the keys of its section.
std::string WhyNotIniLine(std::string_view text, const IniKeys& keys) {
  if (const auto slip = SlipIn(text); !slip.empty()) return std::string(slip);
  if (EqualsUpper(text, "START") || EqualsUpper(text, "END")) {
    return "a GPIO script must begin with [ORVEX_ICE_GPIO]";
  }
  if (text.front() == '[' && text.find(']') != std::string_view::npos) {
    return "nothing may follow the ] of a section header";
  }
  if (text.front() == '[') return "the ] is missing: " + DidYouMean(fmt::format("{}]", text));
  if (text.back() == ']') return "the [ is missing: " + DidYouMean(fmt::format("[{}", text));
  const std::string meant = WithEquals(text, keys);
  return meant.empty() ? "expected [SECTION], KEY=VALUE or a comment starting with #"
                       : DidYouMean(meant);
}

// Reports a key, `name`, that is not among the `keys` of its section.
void WarnOfKey(const ScriptLine& line, const IniKeys& keys, std::string_view name,
               Problems& problems) {
  const std::string bare = WithoutBlanks(name);
  if (const std::string meant = ExpectationKeyMeant(bare); !meant.empty()) {
    problems.Error(line.Start(),
                   Holds(keys, "IR")
                       ? "unknown key, so nothing is compared: " + DidYouMean(meant)
                       : "[CONTROL] scans no register: move this key to a scan section");
  } else if (Holds(keys, bare)) {
    problems.Warn(line.Of(name.substr(name.find_first_of(" \t"))),
                  fmt::format("this blank is part of the key: remove it if you mean \"{}\"", bare));
  } else if (std::any_of(keys.begin(), keys.end(),
                         [&bare](std::string_view key) { return EqualsUpper(bare, key); })) {
    problems.Warn(line.Start(), "keys must be in upper case: this one is ignored");
  } else {
    problems.Warn(line.Start(),
                  fmt::format("unknown key, ignored: expected {}{}", Listed(keys, "or"),
                              InParentheses(KeyMeant(bare, keys))));
  }
}

// Warns if a section header is the tag of a GPIO script, which must precede all other text.
void WarnOfLateTag(const ScriptLine& header, std::string_view name, Problems& problems) {
  if (!icescript::IsSectionTag(fmt::format("[{}]", name))) return;
  problems.Warn(header.Start(),
                "this tag comes after other text, so the file is run as a JTAG script");
}

// ---- Sections

void WarnOfTab(const ScriptLine& line, Problems& problems) {
  const std::size_t tab = line.text.find('\t');
  if (tab == std::string_view::npos) return;
  problems.Warn(line.Of(line.text.substr(tab)), kTabIsText);
}

class SectionFinder {
 public:
  explicit SectionFinder(Problems& problems) : problems_(problems) {}

  void Take(const ScriptLine& line) {
    WarnOfTab(line, problems_);
    const std::size_t equals = line.text.find('=');
    if (line.IsHeader()) {
      TakeHeader(line);
    } else if (equals != std::string_view::npos) {
      TakeValue(line, line.text.substr(0, equals));
    } else {
      problems_.Error(line.Start(),
                      fmt::format("{} in {}: Syntax error: the script does not run ({})", line.text,
                                  name_, WhyNotIniLine(line.text, KeysOf(name_))));
    }
  }

  // Returns the sections. `cut` means that the script has a line that is too long.
  std::vector<IniSection> Finish(bool cut) {
    if (cut) CutLast();
    for (const auto& [name, named] : named_) {
      if (named.section < 0) {
        problems_.Warn(*named.header, "this section is empty, so it does not run");
      }
    }
    return std::move(sections_);
  }

 private:
  struct Named {
    int section = -1;  // the index in sections_, once the section has a value
    std::optional<Place> header;
  };

  void CutLast() {
    const int last = named_[name_].section;
    if (last < 0) {
      named_.erase(name_);
    } else {
      sections_[static_cast<std::size_t>(last)].cut = true;
    }
  }

  void TakeHeader(const ScriptLine& line) {
    name_ = icescript::TrimRight(icescript::TrimLeft(line.text, '['), ']');
    header_ = line.Start();
    if (name_ != "CONTROL" && EqualsUpper(WithoutBlanks(name_), "CONTROL")) {
      problems_.Warn(*header_, "this section is a scan: did you mean [CONTROL]?");
    }
    WarnOfLateTag(line, name_, problems_);
    Named& named = named_[name_];
    if (named.header.has_value()) {
      problems_.Warn(
          *header_,
          name_ == "CONTROL"
              ? "this continues the [CONTROL] section above: together they are one operation"
              : "this continues the section of the same name above");
    } else {
      named.header = header_;
    }
  }

  void TakeValue(const ScriptLine& line, std::string_view key) {
    Named& named = named_[name_];
    if (named.section < 0) {
      named.section = static_cast<int>(sections_.size());
      sections_.push_back({name_, header_.value_or(line.Start()), {}});
    }
    const IniKeys& keys = KeysOf(name_);
    const auto known =
        static_cast<std::size_t>(std::find(keys.begin(), keys.end(), key) - keys.begin());
    if (known < keys.size()) {
      int& place = sections_[static_cast<std::size_t>(named.section)].lines[known];
      const bool repeated = std::exchange(place, line.number) != 0;
      if (repeated && known >= kKeysRead) {
        problems_.Error(line.Start(),
                        "this replaces the value above, which is therefore not compared");
      } else {
        WarnOfRepeat(line, repeated);
      }
    } else {
      WarnOfRepeat(line, !other_keys_.emplace(named.section, key).second);
      WarnOfKey(line, keys, key, problems_);
    }
  }

  void WarnOfRepeat(const ScriptLine& line, bool repeated) {
    if (repeated) problems_.Warn(line.Start(), "this replaces the value above");
  }

  Problems& problems_;
  std::vector<IniSection> sections_;
  std::unordered_map<std::string_view, Named> named_;
  std::set<std::pair<int, std::string_view>> other_keys_;  // each with the index of its section
  std::string_view name_;
  std::optional<Place> header_;
};

}  // namespace

const IniKeys& KeysOf(std::string_view section) {
  static const IniKeys kControl = {"RESET", "CDI"};
  static const IniKeys kScan = {"IR", "DR", "TDO", "MASK", "IR_TDO", "IR_MASK"};
  return section == "CONTROL" ? kControl : kScan;
}

std::vector<IniSection> FindSections(const ScriptText& script, Problems& problems) {
  SectionFinder finder(problems);
  for (const ScriptLine line : script) {
    if (!line.Blank()) finder.Take(line);
  }
  return finder.Finish(script.CutAt().has_value());
}

}  // namespace icehost
