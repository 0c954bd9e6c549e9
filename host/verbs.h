// The verbs. Each has said what ended it when it returns.
#ifndef ICESCRIPT_HOST_VERBS_H_
#define ICESCRIPT_HOST_VERBS_H_

#include "host/options/commands.h"
#include "host/system/interrupt.h"

namespace icehost {

// Returns the status of a command that is well but for an output that is not whole: interrupted if
// a signal ended the wait for its reader.
inline ExitStatus StatusOfLoss() {
  return IsInterrupted() ? kInterrupted : kNotOpened;
}

// Ends the command that serves the probe, if there is one, and shows its output after a failure.
// Returns the status of the verb.
inline ExitStatus EndSpawned(const ProbeOptions& probe, ExitStatus status) {
  const bool failed = status == kScriptFailed || status == kNotOpened;
  if (probe.spawned == nullptr || probe.spawned->End(failed)) return status;
  return status == kAllWell ? kNotOpened : status;
}

// Runs the scripts. Completes the outputs however the run ends.
ExitStatus Execute(const RunCommand& command);
// Checks the scripts and writes what is wrong with them to standard output, in colour on a terminal
// unless NO_COLOR is set. Writes nothing about a script without fault. Throws Interrupted.
ExitStatus Execute(const CheckCommand& command);
// Reports the TAPs on the probe and what is wrong with the chain, or writes the beginning of a
// script for a sound chain. Throws Interrupted.
ExitStatus Execute(const DetectCommand& command);
// Writes a JTAG script for a Serial Vector Format file. Reports what is wrong with the file on
// standard error, and then writes nothing. Throws Interrupted.
ExitStatus Execute(const ImportCommand& command);
// Serves the pins of a probe until a signal ends it.
ExitStatus Execute(const ServeCommand& command);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_VERBS_H_
