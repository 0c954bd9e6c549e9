#ifndef ICESCRIPT_HOST_CHECK_LEARN_H_
#define ICESCRIPT_HOST_CHECK_LEARN_H_

#include <string>

#include "host/check/plan.h"
#include "host/check/problems.h"
#include "host/check/script_text.h"

namespace icehost {

struct Learned {
  std::string script;
  Problems stale;  // warnings about comments that still contain a replaced value
};

// Returns a script that expects the values that a run has read. Replaces the value of each
// expectation that was not met, but keeps its mask. Adds an expectation to each operation that
// reads but has none. Writes a new value in the style of the value that it replaces or, if there is
// none, of its section. Leaves out pins that changed between runs of a line. Changes nothing else.
Learned Learn(const ScriptText& script, const Plan& plan, const Captures& captures);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_LEARN_H_
