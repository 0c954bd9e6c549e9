// The verbs. Each verb reports the reason for a failure before it returns, or throws BadUsage.
#ifndef ICESCRIPT_HOST_VERBS_H_
#define ICESCRIPT_HOST_VERBS_H_

#include "host/options/commands.h"
#include "host/system/interrupt.h"

namespace icehost {

// Returns the status if only an output has failed: kInterrupted after a signal, else kNotOpened.
inline ExitStatus StatusOfLoss() {
  return IsInterrupted() ? kInterrupted : kNotOpened;
}

// Ends the command of --spawn, if there is one, and shows its output after a failure. Returns
// `status`, or kNotOpened instead of kAllWell if processes may remain.
inline ExitStatus EndSpawned(const ProbeOptions& probe, ExitStatus status) {
  const bool failed = status == kScriptFailed || status == kNotOpened;
  if (probe.spawned == nullptr || probe.spawned->End(failed)) return status;
  return status == kAllWell ? kNotOpened : status;
}

// Runs the scripts. Completes the outputs even if the run fails or a signal ends it.
ExitStatus Execute(const RunCommand& command);
// Checks the scripts and writes their problems to standard output, in colour on a terminal unless
// NO_COLOR is set. Writes nothing for a script without problems. Throws Interrupted.
ExitStatus Execute(const CheckCommand& command);
// Reports the TAPs on the probe and the faults of the chain, or writes a first script for a sound
// chain. Throws Interrupted.
ExitStatus Execute(const DetectCommand& command);
// Writes a script for a Serial Vector Format (SVF) file. If the file has errors, reports them on
// standard error and writes nothing. Throws Interrupted.
ExitStatus Execute(const ImportCommand& command);
// Serves the pins of a probe until a signal arrives.
ExitStatus Execute(const ServeCommand& command);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_VERBS_H_
