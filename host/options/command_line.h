// The command line.
#ifndef ICESCRIPT_HOST_OPTIONS_COMMAND_LINE_H_
#define ICESCRIPT_HOST_OPTIONS_COMMAND_LINE_H_

#include <variant>

#include "host/options/commands.h"
#include "host/options/exit_status.h"

namespace icehost {

// The command, or the status to exit with when the command line asked for help or was wrong; what
// there is to say about it has been printed.
std::variant<Command, ExitStatus> ParseCommandLine(int argc, char** argv);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OPTIONS_COMMAND_LINE_H_
