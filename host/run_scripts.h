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

// A script of a run. It is read only once, so the text that is checked is the text that is played.
struct Script {
  std::string path;
  std::string name;                // for messages
  std::optional<ScriptText> text;  // nothing when it is no longer needed
  Plan plan;
  bool has_errors;
  Problems problems;
  RoundTally rounds;
  std::string refusal;  // why the script must not be played; empty if it may be played
};

// Reads and checks all scripts, and prints their problems on standard error as `check` does. Also
// prints each `refusal` that it sets. If any script has a `refusal`, no script may be played.
// Throws IoError, OutOfResources and Interrupted.
std::vector<Script> LoadScripts(const RunCommand& command);

// Returns the first event of the run. The scripts must outlive the event. If `scripts` is empty,
// because they could not be read, the event has only their paths.
RunBegin BeginOf(const RunCommand& command, const std::vector<Script>& scripts);
// Returns the event that begins a script. The script must outlive the event.
ScriptBegin BeginOf(const Script& script, std::size_t index);

// Writes the outputs with OutputKind::reports_unplayed for a run that does not begin. `why` is the
// reason; it may be empty if a script has a `refusal`. `scripts` is empty if they cannot be read.
void ReportUnplayed(const RunCommand& command, const std::vector<Script>& scripts,
                    const std::string& why, ExitStatus status);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RUN_SCRIPTS_H_
