#ifndef ICESCRIPT_HOST_CHECK_CHECK_H_
#define ICESCRIPT_HOST_CHECK_CHECK_H_

#include "host/check/plan.h"
#include "host/check/problems.h"
#include "host/check/script_text.h"

namespace icehost {

struct CheckResult {
  Problems problems;  // sorted by place
  Plan plan;
};

// Finds the problems in a script and the operations that run. Throws Interrupted.
CheckResult CheckScript(const ScriptText& script);

// Add the problems (unsorted) and the plan of a GPIO or JTAG script to `result`.
void CheckGpio(const ScriptText& script, CheckResult& result);
void CheckJtag(const ScriptText& script, CheckResult& result);

// The text of the problem at ScriptText::CutAt().
constexpr const char* kCutScript =
    "this line is longer than 2047 bytes: the plug-in ignores it and all lines after it";

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_CHECK_H_
