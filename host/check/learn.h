// Makes a script that expects what a run of it has read.
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

// Returns the script with the values that were read as its expectations, for each operation that
// reads and for each expectation that it has, whose mask stays. An expectation that was met stays
// as it is. A new value is written as the author wrote the old one, or the bytes of the section.
// Pins that changed between runs of a line are not compared. Everything else stays.
Learned Learn(const ScriptText& script, const Plan& plan, const Captures& captures);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_LEARN_H_
