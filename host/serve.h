// The serve verb.
#ifndef ICESCRIPT_HOST_SERVE_H_
#define ICESCRIPT_HOST_SERVE_H_

#include "host/options/commands.h"
#include "host/options/exit_status.h"

namespace icehost {

// Serves the simulated target until a signal ends it. What ended it otherwise has been said.
ExitStatus Serve(const ServeCommand& command);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SERVE_H_
