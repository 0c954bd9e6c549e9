// What a user may ask for: one structure a verb.
#ifndef ICESCRIPT_HOST_COMMANDS_H_
#define ICESCRIPT_HOST_COMMANDS_H_

#include <chrono>
#include <string>
#include <variant>
#include <vector>

#include "host/system/endpoint.h"
#include "host/target/target.h"

namespace icehost {

struct ProbeChoice {
  enum class Kind { kSim, kBitbang, kOpenocd };
  Kind kind = Kind::kSim;
  Endpoint endpoint;
  std::string tap;  // for OpenOCD; empty: the only one
};

// Far more than anybody writes, and no more than fits the memory of a small machine.
constexpr std::size_t kDefaultSizeLimit = 64U << 20U;

// No file can be written by this name.
constexpr const char* kStandardError = "/";

// In the texts below, empty means "not asked for". An output "-" is standard output.
struct RunCommand {
  std::vector<std::string> scripts;  // "-": standard input
  std::string plugin;
  ProbeChoice probe;
  TargetOptions target;
  int wire_mode = 0;        // CDI_ANSWER_
  bool strict = false;      // warnings fail
  bool force = false;       // scripts with errors run
  bool keep_going = false;  // past values that are not as expected
  std::chrono::milliseconds timeout{5000};
  std::string trace;  // or kStandardError
  std::string json;
  std::string vcd;
  std::string svg;
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

struct ServeCommand {
  Endpoint endpoint;
  TargetOptions target;
  std::chrono::milliseconds idle_limit{60000};
  bool quiet = false;
};

using Command = std::variant<RunCommand, CheckCommand, ServeCommand>;

}  // namespace icehost

#endif  // ICESCRIPT_HOST_COMMANDS_H_
