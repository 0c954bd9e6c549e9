// What is wrong with a JTAG script.
#include <memory>

#include "base/ini_file.h"
#include "host/check/check.h"
#include "host/check/check_scan.h"
#include "host/check/ini_places.h"
#include "host/system/memory_file.h"
#include "jtag/jtag_scr.h"

namespace icehost {
namespace {

using icescript::CIniFile;
using icescript::CString;
using icescript::JtagScr;

void CheckControl(CIniFile& ini, int index, const IniSection& section, Problems& problems) {
  JtagScr scr(nullptr, nullptr);  // reads no file, so it prints nothing
  const std::unique_ptr<icescript::JtagOperatorData> record(scr.ParsingControl(ini, index));
  const auto cdi = section.values.find("CDI");
  if (record != nullptr) {
    if (record->operatorType == icescript::JTAG_OP_RESET && cdi != section.values.end()) {
      problems.Warn(*cdi->second.line, cdi->second.line->column, "RESET wins: CDI is ignored");
    }
    return;
  }
  problems.Error(*section.first, section.first->column, "CONTROL syntax error");
  if (cdi == section.values.end()) return;
  problems.Error(*cdi->second.line, cdi->second.line->ColumnAt(cdi->second.at),
                 "CDI is 5 (5-wire JTAG) or 2 (2-wire interface)");
}

// A section without IR or DR, or with an empty one.
void ReportMissing(const IniSection& section, const std::string& name, const char* key,
                   const std::string& message, Problems& problems) {
  const std::string text = (message.empty() ? "" : message + " ") + ("(" + name) + " has no " +
                           key + ": neither it nor any section after it runs)";
  problems.Error(*section.first, section.first->column, text);
  const auto value = section.values.find(key);
  if (value == section.values.end()) return;
  problems.Error(*value->second.line, value->second.line->column, "the value is empty");
}

}  // namespace

void CheckJtag(const ScriptText& script, Problems& problems) {
  std::string good;
  const IniSections sections = FindPlaces(script, good, problems);

  const MemoryFile file(good);
  CIniFile ini{CString(file.Path())};
  ini.ReadFile();
  for (int i = 0; i < ini.GetNumKeys(); ++i) {
    const std::string name = ini.GetKeyName(i).GetString();
    const IniSection& section = sections.at(name);
    if (name == "CONTROL") {
      CheckControl(ini, i, section, problems);
      continue;
    }
    const CString ir = ini.GetValue(i, "IR");
    const CString dr = ir != "" ? ini.GetValue(i, "DR") : CString();
    if (dr == "") {
      ReportMissing(section, name, ir == "" ? "IR" : "DR", ini.error_msg, problems);
    } else {
      CheckScan(ir, dr, section, name, problems);
    }
  }
}

}  // namespace icehost
