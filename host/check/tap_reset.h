// The comment "# reset TAP", with which a JTAG script asks icehost for a TAP reset.
#ifndef ICESCRIPT_HOST_CHECK_TAP_RESET_H_
#define ICESCRIPT_HOST_CHECK_TAP_RESET_H_

#include "host/check/problems.h"
#include "host/check/script_text.h"

namespace icehost {

// Returns whether a JTAG script has the comment before its first line with text. Warns of the
// comment on any other line, and of similar comments.
bool FindTapReset(const ScriptText& script, Problems& problems);

// Warns of each "# reset TAP" in a GPIO script.
void WarnOfTapReset(const ScriptText& script, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_TAP_RESET_H_
