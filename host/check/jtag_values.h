// The values of a section of a JTAG script.
#ifndef ICESCRIPT_HOST_CHECK_JTAG_VALUES_H_
#define ICESCRIPT_HOST_CHECK_JTAG_VALUES_H_

#include <memory>
#include <optional>
#include <string_view>

#include "host/check/ini_sections.h"
#include "host/check/plan.h"
#include "host/check/problems.h"
#include "jtag/jtag_scr.h"

namespace icehost {

// Returns the value on a line KEY=VALUE.
std::string_view ValueOf(const ScriptLine& line);

// Warn if the plug-in does not read the value of a RESET or CDI line as its author meant it.
void CheckReset(const ScriptLine& reset, Problems& problems);
void CheckCdi(const ScriptLine& cdi, Problems& problems);

// Reports problems in the values on the lines `ir` and `dr`. Neither value may be blank. Returns
// the plug-in's record of the scan, or null if the plug-in refuses the scan.
std::unique_ptr<icescript::JtagOperatorData> CheckScan(const IniSection& section,
                                                       const ScriptLine& ir, const ScriptLine& dr,
                                                       Problems& problems);

// Reads the values of TDO and MASK, or of IR_TDO and IR_MASK, for a register of `bits` bits;
// `value_key` is kDrTdo or kIrTdo. Reports wrong values. Returns nothing if the section has no such
// value, or if a value is wrong.
std::optional<Expectation> ReadScanExpectation(const ScriptText& script, const IniSection& section,
                                               ScanKey value_key, int bits, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_JTAG_VALUES_H_
