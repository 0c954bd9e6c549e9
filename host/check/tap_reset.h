// The comment "# reset TAP", with which a JTAG script asks icehost for a TAP reset.
#ifndef ICESCRIPT_HOST_CHECK_TAP_RESET_H_
#define ICESCRIPT_HOST_CHECK_TAP_RESET_H_

#include "host/check/problems.h"
#include "host/check/script_text.h"

namespace icehost {

// Returns whether a JTAG script has the comment on a line before the first line with text. Warns of
// this comment elsewhere, and of a similar one.
bool FindTapReset(const ScriptText& script, Problems& problems);

// Warns of each such comment in a GPIO script.
void WarnOfTapReset(const ScriptText& script, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_TAP_RESET_H_
