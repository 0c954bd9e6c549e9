#include <fmt/format.h>

#include <memory>
#include <string>
#include <utility>

#include "base/ini_file.h"
#include "host/check/check.h"
#include "host/check/hints.h"
#include "host/check/ini_sections.h"
#include "host/check/jtag_values.h"
#include "host/check/pin_expectation.h"
#include "host/check/tap_reset.h"
#include "host/system/interrupt.h"
#include "host/target/wires.h"
#include "jtag/jtag_scr.h"

namespace icehost {
namespace {

using icescript::CIniFile;
using icescript::CString;
using icescript::JtagScr;

// Reads the sections of a script one by one and plans its operations.
class JtagOperations {
 public:
  JtagOperations(const ScriptText& script, CheckResult& result)
      : script_(script), problems_(result.problems), plan_(result.plan) {}

  void Take(const IniSection& section) {
    // Each section gets its own store, because a shared store would make each lookup slower.
    CIniFile ini;
    Fill(ini, section);
    if (section.name == "CONTROL") {
      TakeControl(ini, section);
    } else {
      TakeScan(ini, section);
    }
    if (ini.error_msg[0] != '\0') message_ = ini.error_msg;
  }

 private:
  void Fill(CIniFile& ini, const IniSection& section) const {
    const IniKeys& keys = KeysOf(section.name);
    for (std::size_t i = 0; i < kKeysRead; ++i) {
      if (section.lines[i] == 0) continue;
      const CString value(ValueOf(script_.Line(section.lines[i])));
      ini.SetValue(CString(section.name), CString(keys[i]), value, true);
    }
  }

  void TakeControl(CIniFile& ini, const IniSection& section) {
    JtagScr scr(nullptr, nullptr);  // reads no file and prints nothing
    const std::unique_ptr<icescript::JtagOperatorData> record(scr.ParsingControl(ini, 0));
    const bool reset = record != nullptr && record->operatorType == icescript::JTAG_OP_RESET;
    if (record == nullptr) {
      ReportNoControl(section);
    } else {
      Append({section.lines[reset ? kReset : kCdi], std::string(section.name)});
      if (!reset) two_wires_ = record->operatorType == icescript::JTAG_OP_CDI_2WIRE;
    }
    if (reset) CheckReset(script_.Line(section.lines[kReset]), problems_);
    if (section.lines[kCdi] == 0) return;
    const ScriptLine cdi = script_.Line(section.lines[kCdi]);
    if (record == nullptr) {
      problems_.Error(cdi.Of(ValueOf(cdi)), "CDI must be 5 (5-wire JTAG) or 2 (2-wire interface)");
    } else if (reset) {
      problems_.Warn(cdi.Start(), "CDI is ignored because this script also has RESET");
    } else {
      CheckCdi(cdi, problems_);
    }
  }

  void ReportNoControl(const IniSection& section) {
    if (section.lines[kCdi] != 0) return problems_.Error(section.first, "CONTROL syntax error");
    if (section.cut) return;
    problems_.Error(section.first, "CONTROL syntax error (CONTROL has neither RESET nor CDI)");
  }

  void TakeScan(CIniFile& ini, const IniSection& section) {
    const IniKeys& keys = KeysOf(section.name);
    for (std::size_t i = 0; i < kKeysRead; ++i) {
      if (ini.GetValue(0, CString(keys[i])) != "") continue;
      if (!section.cut || section.lines[i] != 0) {
        ReportMissing(section, i, ini.error_msg[0] != '\0' ? ini.error_msg : message_);
      }
      stopped_ = true;
      return;
    }
    const auto record = CheckScan(section, script_.Line(section.lines[kIr]),
                                  script_.Line(section.lines[kDr]), problems_);
    if (record == nullptr) return;
    Append(
        {section.lines[kDr], std::string(section.name), record->readFlag != 0, section.lines[kIr]});
    RefuseBeyondTwoWires(section, kIr, record->irBitLength);
    RefuseBeyondTwoWires(section, kDr, record->drBitLength);
    TakeExpectation(section, kIrTdo, record->irBitLength);
    TakeExpectation(section, kDrTdo, record->drBitLength);
  }

  void RefuseBeyondTwoWires(const IniSection& section, std::size_t key, int bits) {
    if (!two_wires_ || bits <= kMostTwoWireBits) return;
    const ScriptLine line = script_.Line(section.lines[key]);
    problems_.Error(
        line.Of(ValueOf(line)),
        "a register can have at most 256 bits over two wires: the plug-in loses the 33rd byte");
  }

  void Append(JtagOperation operation) {
    if (stopped_) return;
    plan_.jtag.push_back(std::move(operation));
    ++plan_.operations;
  }

  void TakeExpectation(const IniSection& section, ScanKey value_key, int bits) {
    auto expectation = ReadScanExpectation(script_, section, value_key, bits, problems_);
    if (!expectation.has_value() || stopped_) return;
    expectation->operation = plan_.jtag.size() - 1;
    plan_.expectations.push_back(std::move(*expectation));
  }

  static std::string NameOf(const IniSection& section) {
    return section.name.empty() ? "the unnamed section" : fmt::format("section {}", section.name);
  }

  // Reports that IR or DR is missing or empty in a section.
  void ReportMissing(const IniSection& section, std::size_t key, const std::string& message) {
    const std::string reason =
        fmt::format("{} has no {}: the plug-in skips it and all sections after it", NameOf(section),
                    KeysOf(section.name)[key]);
    problems_.Error(section.first, message.empty() ? reason : message + InParentheses(reason));
    if (section.lines[key] == 0) return;
    problems_.Error(script_.Line(section.lines[key]).Start(), "the value is empty");
  }

  const ScriptText& script_;
  Problems& problems_;
  Plan& plan_;
  bool two_wires_ = false;  // the script has selected two wires
  bool stopped_ = false;    // the plug-in runs no more sections
  std::string message_;     // the message of the last failed lookup, in any section
};

}  // namespace

void CheckJtag(const ScriptText& script, CheckResult& result) {
  JtagOperations operations(script, result);
  for (const IniSection& section : FindSections(script, result.problems)) {
    ThrowIfInterrupted();
    operations.Take(section);
  }
  result.plan.resets_tap = FindTapReset(script, result.problems);
  for (const ScriptLine line : script) WarnOfPinExpectation(line, result.problems);
  if (const auto cut = script.CutAt()) result.problems.Error(*cut, kCutScript);
}

}  // namespace icehost
