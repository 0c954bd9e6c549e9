// The scripts of a run before it begins.
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

// Read once: the text that is checked is the text that is played.
struct Script {
  std::string path;
  std::string name;                // in messages
  std::optional<ScriptText> text;  // for as long as it is needed
  Plan plan;
  bool has_errors;
  Problems problems;
  RoundTally rounds;
  std::string refusal;  // why it is not played; empty: it is
};

// Reads and checks all scripts, and shows their problems as check does, on standard error. Says why
// one is not to be played; then none is. Throws IoError, OutOfResources and Interrupted.
std::vector<Script> LoadScripts(const RunCommand& command);

// Returns what the outputs get first, but for the time. The scripts must outlive it; without them
// it has their names only.
RunBegin BeginOf(const RunCommand& command, const std::vector<Script>& scripts);
ScriptBegin BeginOf(const Script& script, std::size_t index);

// Writes the outputs that also report a run that does not begin. `why` may be empty if the scripts
// say it; there are none if they could not be read.
void ReportUnplayed(const RunCommand& command, const std::vector<Script>& scripts,
                    const std::string& why, ExitStatus status);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RUN_SCRIPTS_H_
