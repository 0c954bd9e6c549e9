// The verbs. What ended one has been said.
#ifndef ICESCRIPT_HOST_VERBS_H_
#define ICESCRIPT_HOST_VERBS_H_

#include "host/options/commands.h"

namespace icehost {

// Runs the scripts, and completes what it writes however that ends. What ended it has been said.
ExitStatus Execute(const RunCommand& command);
// Checks the scripts and writes what is wrong with them to standard output, in colour on a terminal
// unless NO_COLOR is set; a script without fault leaves no word. Throws Interrupted.
ExitStatus Execute(const CheckCommand& command);
// Tells which TAPs are on the probe, and what is wrong with the chain, or writes the beginning of a
// script for a sound one. Throws Interrupted.
ExitStatus Execute(const DetectCommand& command);
// Makes a JTAG script of a Serial Vector Format file. What is wrong is told on standard error, and
// then nothing is written. Throws Interrupted.
ExitStatus Execute(const ImportCommand& command);
// Serves the simulated target until a signal ends it. What ended it otherwise has been said.
ExitStatus Execute(const ServeCommand& command);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_VERBS_H_
