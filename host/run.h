// The run verb.
#ifndef ICESCRIPT_HOST_RUN_H_
#define ICESCRIPT_HOST_RUN_H_

#include "host/options/commands.h"
#include "host/options/exit_status.h"

namespace icehost {

// Runs the scripts, and completes what it writes however that ends. What ended it has been said.
ExitStatus Run(const RunCommand& command);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RUN_H_
