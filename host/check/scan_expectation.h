// What a scan is expected to read.
#ifndef ICESCRIPT_HOST_CHECK_SCAN_EXPECTATION_H_
#define ICESCRIPT_HOST_CHECK_SCAN_EXPECTATION_H_

#include <optional>

#include "host/check/ini_sections.h"
#include "host/check/plan.h"
#include "host/check/problems.h"

namespace icehost {

// The values of TDO and MASK, or of IR_TDO and IR_MASK (`value_key` is the first of the two), for a
// register of `bits` bits. None where the section has none, or where it is wrong, which is
// reported.
std::optional<Expectation> ScanExpectation(const ScriptText& script, const IniSection& section,
                                           ScanKey value_key, int bits, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_SCAN_EXPECTATION_H_
