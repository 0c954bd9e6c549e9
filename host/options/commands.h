// The command line: a structure for the options of each verb, and the parser that fills them in.
#ifndef ICESCRIPT_HOST_OPTIONS_COMMANDS_H_
#define ICESCRIPT_HOST_OPTIONS_COMMANDS_H_

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/system/endpoint.h"
#include "host/tables/outputs.h"
#include "host/tables/probes.h"
#include "host/tables/protocols.h"

namespace icehost {

enum ExitStatus : int {
  kAllWell = 0,
  kScriptFailed = 1,  // or a file has errors, or the chain of TAPs is not sound
  kBadUsage = 2,
  kNotOpened = 3,  // the plug-in, a connection or an output could not be opened, or was lost
  kInterrupted = 130,
};

// In these structures, an empty text means "not given". The file "-" is standard input or output.

// The unit is bytes. Real scripts are smaller, and even a small machine has this much memory.
constexpr std::size_t kDefaultSizeLimit = 64U << 20U;

struct RunCommand {
  std::vector<std::string> arguments;  // the whole command line
  std::vector<std::string> scripts;
  std::string plugin;
  ProbeOptions probe;
  int wire_mode = 0;        // the CDI_ANSWER_ value at the start
  bool strict = false;      // warnings count as failures
  bool force = false;       // also runs scripts with errors
  bool keep_going = false;  // continues after values that are not as expected
  long repeat = 1;          // the number of rounds; 0: rounds repeat until a signal arrives
  OutputRequests outputs;
  std::string learn;  // the file for the learned script
  bool summary = false;
  std::size_t size_limit = kDefaultSizeLimit;  // of a script, in bytes
  bool quiet = false;

  bool Repeats() const { return repeat != 1; }
};

struct CheckCommand {
  std::vector<std::string> scripts;
  std::string json;     // the file for the problems as JSON lines
  bool strict = false;  // warnings count as failures
  std::size_t size_limit = kDefaultSizeLimit;
  bool quiet = false;
};

enum class ScriptKind { kJtag, kGpio };

struct ImportCommand {
  std::string file;
  ScriptKind script = ScriptKind::kJtag;
  std::optional<double> tck_hz;  // the highest TCK rate of the probe, for a GPIO script
  std::string output = "-";
  std::size_t size_limit = kDefaultSizeLimit;  // of the file and of the script, in bytes
  bool all = false;                            // reports each problem separately, not in groups
  bool quiet = false;
};

struct ServeCommand {
  Endpoint endpoint;
  const ProtocolKind* protocol = &ProtocolKinds().front();
  ProbeOptions probe;
  std::chrono::milliseconds idle_limit{60000};
  OutputRequests outputs;
  bool verbose = false;
  bool quiet = false;
};

struct DetectCommand {
  ProbeOptions probe;
  std::optional<ScriptKind> script;  // the kind of script to write; nothing: a report
  bool quiet = false;
};

using Command = std::variant<RunCommand, CheckCommand, DetectCommand, ImportCommand, ServeCommand>;

// Returns the command. If the command line asks for help or is wrong, prints the help or an error,
// and returns the exit status instead.
std::variant<Command, ExitStatus> ParseCommandLine(int argc, char** argv);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OPTIONS_COMMANDS_H_
