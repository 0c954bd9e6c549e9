// Checks scripts without touching a probe.
#ifndef ICESCRIPT_HOST_CHECK_CHECK_H_
#define ICESCRIPT_HOST_CHECK_CHECK_H_

#include "host/check/plan.h"
#include "host/check/problems.h"
#include "host/check/script_text.h"

namespace icehost {

struct Checked {
  Problems problems;
  Plan plan;
};

// All problems of a script, in the order of their places, and what runs of it. Throws Interrupted,
// as does all of the below.
Checked Check(const ScriptText& script);

// What Check is made of: a script that the plug-in runs as a GPIO script, and as a JTAG script.
bool IsGpioScript(const ScriptText& script);
void CheckGpio(const ScriptText& script, Checked& checked);
void CheckJtag(const ScriptText& script, Checked& checked);

// Where the plug-in stops reading for a line that is too long.
constexpr const char* kCutScript =
    "the line is too long: the plug-in reads neither it nor anything after it";
Place CutAt(const ScriptLine& too_long);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_CHECK_H_
