// Reads and checks the scripts of a command line.
#ifndef ICESCRIPT_HOST_LOAD_SCRIPTS_H_
#define ICESCRIPT_HOST_LOAD_SCRIPTS_H_

#include <optional>
#include <string>
#include <vector>

#include "host/check/plan.h"
#include "host/check/problems.h"
#include "host/check/script_text.h"
#include "host/options/commands.h"

namespace icehost {

// Read once, so that what is checked is what is run.
struct Script {
  std::string path;
  std::string name;                // what messages call it
  std::optional<ScriptText> text;  // for as long as it is needed
  Plan plan;
  bool has_errors;
  Problems problems;  // only where a page is to show them
};

// Reads and checks all of them, and shows their problems on standard error as check does. Returns
// none of them, and says why, where they are not to be played. Throws IoError and Interrupted.
std::vector<Script> LoadScripts(const RunCommand& command);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_LOAD_SCRIPTS_H_
