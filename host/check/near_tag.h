// Scripts that are not quite GPIO scripts.
#ifndef ICESCRIPT_HOST_CHECK_NEAR_TAG_H_
#define ICESCRIPT_HOST_CHECK_NEAR_TAG_H_

#include "host/check/problems.h"

namespace icehost {

// Reports a first line of a JTAG script that looks as if it was to make a GPIO script of it.
void WarnOfNearTag(const ScriptText& script, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_NEAR_TAG_H_
