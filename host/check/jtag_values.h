// The values of a section of a JTAG script: of CONTROL, of a scan, and those that a scan expects.
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

// The value on a line KEY=VALUE.
std::string_view ValueOf(const ScriptLine& line);

// Reports the traps of a line that resets the target, and of one that selects an interface.
void CheckReset(const ScriptLine& reset, Problems& problems);
void CheckCdi(const ScriptLine& cdi, Problems& problems);

// Reports what is wrong with the values of IR and DR on these lines, neither of them empty. Returns
// the plug-in's record of them: null where it refuses them.
std::unique_ptr<icescript::JtagOperatorData> CheckScan(const IniSection& section,
                                                       const ScriptLine& ir, const ScriptLine& dr,
                                                       Problems& problems);

// Reads the values of TDO and MASK, or of IR_TDO and IR_MASK (`value_key` is the first of the two),
// for a register of `bits` bits. None where the section has none, or where it is wrong, which is
// reported.
std::optional<Expectation> ReadScanExpectation(const ScriptText& script, const IniSection& section,
                                               ScanKey value_key, int bits, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_JTAG_VALUES_H_
