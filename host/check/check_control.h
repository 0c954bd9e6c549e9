// The values of the section CONTROL.
#ifndef ICESCRIPT_HOST_CHECK_CHECK_CONTROL_H_
#define ICESCRIPT_HOST_CHECK_CHECK_CONTROL_H_

#include "host/check/problems.h"

namespace icehost {

// Reports the traps of a line that resets the target, and of one that selects an interface.
void CheckReset(const ScriptLine& reset, Problems& problems);
void CheckCdi(const ScriptLine& cdi, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_CHECK_CONTROL_H_
