// The scripts of a command line.
#ifndef ICESCRIPT_HOST_SCRIPTS_H_
#define ICESCRIPT_HOST_SCRIPTS_H_

#include <optional>
#include <string>
#include <vector>

#include "host/check/plan.h"
#include "host/check/problems.h"
#include "host/check/script_text.h"
#include "host/options/commands.h"

namespace icehost {

// Read once: what is judged is what is run.
struct Script {
  std::string path;
  std::string name;                // what messages call it
  std::optional<ScriptText> text;  // for as long as it is needed
  Plan plan;
  bool has_errors;
  Problems problems;  // only where a page is to show them
};

// Reads and checks all of them, and shows what is wrong as check does, on standard error. None, and
// a word why, where they are not to be played. Throws as ReadScript and Check.
std::vector<Script> LoadScripts(const RunCommand& command);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SCRIPTS_H_
