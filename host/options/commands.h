// The command line: a structure for each verb, and the parser that fills it in.
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
  kScriptFailed = 1,  // or a script has errors, or the chain of TAPs is not sound
  kBadUsage = 2,
  kNotOpened = 3,  // could not open the plug-in, endpoint or an output; or lost the connection
  kInterrupted = 130,
};

// An empty text below means "not given". The file "-" is standard input or output.

// In bytes. Larger than any script, and small enough for the memory of a small machine.
constexpr std::size_t kDefaultSizeLimit = 64U << 20U;

struct RunCommand {
  std::vector<std::string> arguments;  // the whole command line, as given
  std::vector<std::string> scripts;
  std::string plugin;
  ProbeOptions probe;
  int wire_mode = 0;        // a CDI_ANSWER_ value, at the start
  bool strict = false;      // warnings are failures
  bool force = false;       // run scripts with errors, too
  bool keep_going = false;  // after values that are not as expected
  long repeat = 1;          // rounds; 0: until a signal arrives
  OutputRequests outputs;
  std::string learn;
  bool summary = false;
  std::size_t size_limit = kDefaultSizeLimit;  // of a script, in bytes
  bool quiet = false;

  bool Repeats() const { return repeat != 1; }
};

struct CheckCommand {
  std::vector<std::string> scripts;
  std::string json;
  bool strict = false;  // warnings are failures
  std::size_t size_limit = kDefaultSizeLimit;
  bool quiet = false;
};

enum class ScriptKind { kJtag, kGpio };

struct ImportCommand {
  std::string file;
  ScriptKind script = ScriptKind::kJtag;
  std::optional<double> tck_hz;  // of the probe, for a GPIO script
  std::string output = "-";
  std::size_t size_limit = kDefaultSizeLimit;  // of the file and of the script, in bytes
  bool all = false;                            // report every problem, without groups
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
  std::optional<ScriptKind> script;
  bool quiet = false;
};

using Command = std::variant<RunCommand, CheckCommand, DetectCommand, ImportCommand, ServeCommand>;

// Returns the command. If the command line asks for help or is wrong, prints the help or an error
// and returns the exit status.
std::variant<Command, ExitStatus> ParseCommandLine(int argc, char** argv);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OPTIONS_COMMANDS_H_
