// The check verb.
#ifndef ICESCRIPT_HOST_CHECK_VERB_H_
#define ICESCRIPT_HOST_CHECK_VERB_H_

#include "host/options/commands.h"
#include "host/options/exit_status.h"

namespace icehost {

// Checks the scripts and writes what is wrong with them to standard output, in colour on a terminal
// unless NO_COLOR is set; a script without fault leaves no word. Throws Interrupted.
ExitStatus CheckScripts(const CheckCommand& command);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_VERB_H_
