// Checks scripts without touching a probe.
#ifndef ICESCRIPT_HOST_CHECK_CHECK_H_
#define ICESCRIPT_HOST_CHECK_CHECK_H_

#include "host/check/plan.h"
#include "host/check/problems.h"
#include "host/check/script_text.h"

namespace icehost {

struct CheckResult {
  Problems problems;  // in the order of their places
  Plan plan;
};

// Finds all problems of a script, and what runs of it. Throws Interrupted, as do the two below.
CheckResult CheckScript(const ScriptText& script);

// The parts of CheckScript: for a script that the plug-in runs as a GPIO script, and as a JTAG
// script.
void CheckGpio(const ScriptText& script, CheckResult& result);
void CheckJtag(const ScriptText& script, CheckResult& result);

// The problem at ScriptText::CutAt().
constexpr const char* kCutScript =
    "this line is longer than 2047 bytes: the plug-in reads neither it nor any line after it";

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_CHECK_H_
