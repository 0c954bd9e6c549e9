// One scan of a JTAG script.
#ifndef ICESCRIPT_HOST_CHECK_CHECK_SCAN_H_
#define ICESCRIPT_HOST_CHECK_CHECK_SCAN_H_

#include <memory>

#include "host/check/ini_sections.h"
#include "host/check/problems.h"
#include "jtag/jtag_scr.h"

namespace icehost {

// Reports what is wrong with the values of IR and DR, neither of them empty, which stand behind the
// "=" of these lines. Returns what the plug-in makes of them: null where it refuses them.
std::unique_ptr<icescript::JtagOperatorData> CheckScan(const IniSection& section,
                                                       const ScriptLine& ir, const ScriptLine& dr,
                                                       Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_CHECK_SCAN_H_
