#include "host/check/ini_sections.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

#include "base/text.h"
#include "host/check/ini_hints.h"

namespace icehost {
namespace {

using icescript::EqualsUpper;

void WarnOfTab(const ScriptLine& line, Problems& problems) {
  const std::size_t tab = line.text.find('\t');
  if (tab == std::string_view::npos) return;
  problems.Warn(line.Of(line.text.substr(tab)), "a tab is no blank here: it is part of the text");
}

class SectionFinder {
 public:
  explicit SectionFinder(Problems& problems) : problems_(problems) {}

  // A line with text.
  void Take(const ScriptLine& line);
  std::vector<IniSection> Finish();

 private:
  struct Named {
    int section = -1;  // in sections_, once it has a value
    std::optional<Place> header;
  };

  void TakeHeader(const ScriptLine& line);
  void TakeValue(const ScriptLine& line, std::string_view key);
  void WarnOfRepeat(const ScriptLine& line, bool repeated);

  Problems& problems_;
  std::vector<IniSection> sections_;
  std::unordered_map<std::string_view, Named> named_;
  std::set<std::pair<int, std::string_view>> other_keys_;  // by section
  std::string_view name_;
  std::optional<Place> header_;
};

void SectionFinder::Take(const ScriptLine& line) {
  WarnOfTab(line, problems_);
  const std::size_t equals = line.text.find('=');
  if (line.IsHeader()) {
    TakeHeader(line);
  } else if (equals != std::string_view::npos) {
    TakeValue(line, line.text.substr(0, equals));
  } else {
    problems_.Error(line.Start(),
                    fmt::format("{} in {}: Syntax error: nothing runs ({})", line.text, name_,
                                WhyNoIniLine(line.text, KeysOf(name_))));
  }
}

void SectionFinder::TakeHeader(const ScriptLine& line) {
  name_ = icescript::TrimRight(icescript::TrimLeft(line.text, '['), ']');
  header_ = line.Start();
  if (name_ != "CONTROL" && EqualsUpper(WithoutBlanks(name_), "CONTROL")) {
    problems_.Warn(*header_, "this is not the section CONTROL, but a scan");
  }
  WarnOfLateTag(line, name_, problems_);
  Named& named = named_[name_];
  if (named.header.has_value()) {
    problems_.Warn(*header_, name_ == "CONTROL"
                                 ? "this continues the CONTROL above: the two are one operation"
                                 : "this section continues the one of the same name above");
  } else {
    named.header = header_;
  }
}

void SectionFinder::TakeValue(const ScriptLine& line, std::string_view key) {
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
      problems_.Error(line.Start(), "this replaces the value given above, which is not compared");
    } else {
      WarnOfRepeat(line, repeated);
    }
  } else {
    WarnOfRepeat(line, !other_keys_.emplace(named.section, key).second);
    WarnOfKey(line, keys, key, problems_);
  }
}

void SectionFinder::WarnOfRepeat(const ScriptLine& line, bool repeated) {
  if (repeated) problems_.Warn(line.Start(), "this replaces the value given above");
}

std::vector<IniSection> SectionFinder::Finish() {
  for (const auto& [name, named] : named_) {
    if (named.section < 0) problems_.Warn(*named.header, "a section without a value is not run");
  }
  return std::move(sections_);
}

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
  return finder.Finish();
}

}  // namespace icehost
