// What the user asked for.
#ifndef ICESCRIPT_HOST_COMMAND_LINE_H_
#define ICESCRIPT_HOST_COMMAND_LINE_H_

#include <string>
#include <variant>
#include <vector>

namespace icehost {

// Exit statuses of icehost.
enum ExitStatus : int {
  kAllRan = 0,
  kScriptFailed = 1,
  kBadUsage = 2,
  kNotLoaded = 3,
};

struct RunCommand {
  std::vector<std::string> scripts;
  std::string plugin;
};

// The command, or the status to exit with when the command line asked for help or was wrong; what
// there is to say about it has been printed.
std::variant<RunCommand, ExitStatus> ParseCommandLine(int argc, char** argv);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_COMMAND_LINE_H_
