// The detect verb.
#ifndef ICESCRIPT_HOST_DETECT_H_
#define ICESCRIPT_HOST_DETECT_H_

#include "host/options/commands.h"
#include "host/options/exit_status.h"

namespace icehost {

// Tells which TAPs are on the probe, and what is wrong with the chain, or writes the beginning of a
// script for a sound one. Throws Interrupted.
ExitStatus Detect(const DetectCommand& command);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_DETECT_H_
