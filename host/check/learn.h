// A run that becomes its own test.
#ifndef ICESCRIPT_HOST_CHECK_LEARN_H_
#define ICESCRIPT_HOST_CHECK_LEARN_H_

#include <string>

#include "host/check/captures.h"
#include "host/check/plan.h"
#include "host/check/script_text.h"

namespace icehost {

// The script with what was read as what it expects: all reads, and what it expected already, under
// the masks that it has. Pins that changed from one run of a line to the next do not count there.
// Everything else stays as it is.
std::string Learn(const ScriptText& script, const Plan& plan, const Captures& captures);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_LEARN_H_
