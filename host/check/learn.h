// A script that expects what a run of it has read.
#ifndef ICESCRIPT_HOST_CHECK_LEARN_H_
#define ICESCRIPT_HOST_CHECK_LEARN_H_

#include <string>

#include "host/check/plan.h"
#include "host/check/problems.h"
#include "host/check/script_text.h"

namespace icehost {

struct Learned {
  std::string script;
  // Warns of comments that still contain a value which the script no longer expects.
  Problems stale;
};

// Writes the values that were read into the script: for each read, and for each value that it
// expects already, under the masks that it has. An expectation that was met stays as it is; a new
// value is written as the author wrote the old one, or the bytes of the section. Pins that changed
// from one run of a line to the next do not count there. Everything else stays as it is.
Learned Learn(const ScriptText& script, const Plan& plan, const Captures& captures);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_LEARN_H_
