// Reads the scripts of a run before it begins.
#ifndef ICESCRIPT_HOST_RUN_SCRIPTS_H_
#define ICESCRIPT_HOST_RUN_SCRIPTS_H_

#include <optional>
#include <string>
#include <vector>

#include "host/check/check.h"
#include "host/check/plan.h"
#include "host/events/events.h"
#include "host/events/round_tally.h"
#include "host/options/commands.h"

namespace icehost {

// A script is read once: the text that is checked is the text that is played.
struct Script {
  std::string path;
  std::string name;                // for messages
  std::optional<ScriptText> text;  // nothing when it is no longer needed
  Plan plan;
  bool has_errors;
  Problems problems;
  RoundTally rounds;
  std::string refusal;  // why it is not played; empty if it is
};

// Reads and checks all scripts, and prints their problems to standard error as `check` does. If it
// sets and prints a `refusal`, no script may be played. Throws IoError, OutOfResources and
// Interrupted.
std::vector<Script> LoadScripts(const RunCommand& command);

// Returns the first event for the outputs. The scripts must outlive it. If `scripts` is empty, the
// event has only their paths.
RunBegin BeginOf(const RunCommand& command, const std::vector<Script>& scripts);
ScriptBegin BeginOf(const Script& script, std::size_t index);

// Writes the outputs that report even a run that does not begin. `why` may be empty if a script has
// a `refusal`. `scripts` is empty if they could not be read.
void ReportUnplayed(const RunCommand& command, const std::vector<Script>& scripts,
                    const std::string& why, ExitStatus status);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RUN_SCRIPTS_H_
