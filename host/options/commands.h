// What a user may ask for: one structure a verb.
#ifndef ICESCRIPT_HOST_OPTIONS_COMMANDS_H_
#define ICESCRIPT_HOST_OPTIONS_COMMANDS_H_

#include <chrono>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/probe/sim_port.h"
#include "host/system/endpoint.h"
#include "host/tables/outputs.h"

namespace icehost {

struct ProbeChoice {
  enum class Kind { kSim, kBitbang, kOpenocd };
  Kind kind = Kind::kSim;
  Endpoint endpoint;
  std::string tap;  // for OpenOCD; empty: the only one
};

// What a verb works on.
struct ProbeOptions {
  ProbeChoice choice;
  std::chrono::milliseconds timeout{5000};  // of its answers
  TargetOptions target;                     // behind the simulated probe
};

// In the texts below, empty means "not asked for". An output "-" is standard output.

// Far more than anybody writes, and no more than fits the memory of a small machine.
constexpr std::size_t kDefaultSizeLimit = 64U << 20U;

struct RunCommand {
  std::vector<std::string> scripts;  // "-": standard input
  std::string plugin;
  ProbeOptions probe;
  int wire_mode = 0;        // CDI_ANSWER_
  bool strict = false;      // warnings fail
  bool force = false;       // scripts with errors run
  bool keep_going = false;  // past values that are not as expected
  OutputPaths outputs;
  std::string learn;
  bool summary = false;
  std::size_t size_limit = kDefaultSizeLimit;  // of a script, in bytes
  bool quiet = false;
};

struct CheckCommand {
  std::vector<std::string> scripts;
  std::string json;
  bool strict = false;  // warnings fail
  std::size_t size_limit = kDefaultSizeLimit;
  bool quiet = false;
};

struct ImportCommand {
  std::string file;  // "-": standard input
  std::string output = "-";
  std::size_t size_limit = kDefaultSizeLimit;  // of the file, and of the script, in bytes
  bool quiet = false;
};

struct ServeCommand {
  Endpoint endpoint;
  ProbeOptions probe;
  std::chrono::milliseconds idle_limit{60000};
  OutputPaths outputs;
  bool verbose = false;
  bool quiet = false;
};

enum class ScriptKind { kJtag, kGpio };

struct DetectCommand {
  ProbeOptions probe;
  std::optional<ScriptKind> script;
  bool quiet = false;
};

using Command = std::variant<RunCommand, CheckCommand, DetectCommand, ImportCommand, ServeCommand>;

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OPTIONS_COMMANDS_H_
