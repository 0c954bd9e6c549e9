// Makes a script that expects the values that a run of it has read.
#ifndef ICESCRIPT_HOST_CHECK_LEARN_H_
#define ICESCRIPT_HOST_CHECK_LEARN_H_

#include <string>

#include "host/check/plan.h"
#include "host/check/problems.h"
#include "host/check/script_text.h"

namespace icehost {

struct Learned {
  std::string script;
  // Warnings about comments that still contain a value which the script no longer expects.
  Problems stale;
};

// Returns the script with the values that were read as its expectations. Replaces each expectation
// that was not met, but keeps its mask, and adds one to each operation that reads but has none.
// Writes a new value in the form of the old one, or of the bytes of the section. Leaves out pins
// that changed between runs of a line. Changes nothing else.
Learned Learn(const ScriptText& script, const Plan& plan, const Captures& captures);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_LEARN_H_
