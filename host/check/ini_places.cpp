#include "host/check/ini_places.h"

#include <algorithm>
#include <vector>

#include "base/ini_file.h"
#include "base/text.h"
#include "host/system/memory_file.h"

namespace icehost {
namespace {

using icescript::CIniFile;
using icescript::CString;

bool IsHeader(const ScriptLine& line) {
  return line.text.front() == '[' && line.text.back() == ']';
}

std::string SectionName(const ScriptLine& header) {
  return std::string(icescript::TrimRight(icescript::TrimLeft(header.text, '['), ']'));
}

const char* const* KeysOf(const std::string& section) {
  static constexpr const char* kControl[] = {"RESET", "CDI"};
  static constexpr const char* kScan[] = {"IR", "DR"};
  return section == "CONTROL" ? kControl : kScan;
}

std::string WithoutBlanks(std::string text) {
  text.erase(
      std::remove_if(text.begin(), text.end(), [](char ch) { return ch == ' ' || ch == '\t'; }),
      text.end());
  return text;
}

void CheckKey(const ScriptLine& line, const std::string& section, const std::string& name,
              Problems& problems) {
  const char* const* const keys = KeysOf(section);
  if (name == keys[0] || name == keys[1]) return;
  const std::string bare = WithoutBlanks(name);
  const auto is = [&](const std::string& text) { return text == keys[0] || text == keys[1]; };
  if (is(bare)) {
    problems.Warn(line, line.ColumnAt(name.find_first_of(" \t")),
                  "a blank here belongs to the name: this is not \"" + bare + "\"");
  } else if (is(CString(bare).MakeUpper())) {
    problems.Warn(line, line.column, "keys are in upper case: this one is ignored");
  } else {
    problems.Warn(line, line.column,
                  "unknown key, ignored: a section like this has " + std::string(keys[0]) +
                      " and " + keys[1]);
  }
}

void CheckTab(const ScriptLine& line, Problems& problems) {
  const std::size_t tab = line.text.find('\t');
  if (tab == std::string::npos) return;
  problems.Warn(line, line.ColumnAt(tab), "a tab is no blank here: it is part of the text");
}

IniSections ReadLines(const ScriptText& script, std::string& good, Problems& problems) {
  IniSections sections;
  std::string name;
  const ScriptLine* header = nullptr;
  std::vector<int> left_out;
  for (const ScriptLine& line : script.Lines()) {
    if (line.Blank()) continue;
    CheckTab(line, problems);
    const std::size_t equals = line.text.find('=');
    if (IsHeader(line)) {
      name = SectionName(line);
      header = &line;
    } else if (equals == std::string::npos) {
      const MemoryFile file((name.empty() ? "" : "[" + name + "]\n") + line.raw);
      CIniFile ini{CString(file.Path())};
      ini.ReadFile();
      std::string message = ini.error_msg;
      problems.Error(line, line.column, message.substr(0, message.find('\n')) + ": nothing runs");
      left_out.push_back(line.number);
    } else {
      IniSection& section = sections[name];
      if (section.first == nullptr) section.first = header != nullptr ? header : &line;
      const std::string key = line.text.substr(0, equals);
      if (section.values.count(key) != 0) {
        problems.Warn(line, line.column, "this replaces the value given above");
      }
      section.values[key] = {&line, equals + 1};
      CheckKey(line, name, key, problems);
    }
  }
  good = script.Without(left_out);
  return sections;
}

void CheckHeaders(const ScriptText& script, const IniSections& sections, Problems& problems) {
  std::map<std::string, const ScriptLine*> seen;
  for (const ScriptLine& line : script.Lines()) {
    if (line.Blank() || !IsHeader(line)) continue;
    const std::string name = SectionName(line);
    if (name != "CONTROL" && CString(WithoutBlanks(name)).MakeUpper() == "CONTROL") {
      problems.Warn(line, line.column, "this is not the section CONTROL, but a scan");
    }
    if (!seen.emplace(name, &line).second) {
      problems.Warn(line, line.column,
                    name == "CONTROL"
                        ? "this continues the CONTROL above: the two are one operation"
                        : "this section continues the one of the same name above");
    } else if (sections.count(name) == 0) {
      problems.Warn(line, line.column, "a section without a value is not run");
    }
  }
}

}  // namespace

IniSections FindPlaces(const ScriptText& script, std::string& good, Problems& problems) {
  IniSections sections = ReadLines(script, good, problems);
  CheckHeaders(script, sections, problems);
  return sections;
}

}  // namespace icehost
