#include "host/scripts.h"

#include <fmt/format.h>
#include <unistd.h>

#include <iostream>
#include <utility>

#include "host/check/check.h"
#include "host/system/standard_streams.h"

namespace icehost {
namespace {

// Why a script with these problems is not played; empty: it is.
std::string WhyNot(const Problems& problems, const RunCommand& command) {
  if (problems.HasErrors() && !command.force) {
    return "has errors: nothing is played (--force plays it as the plug-in takes it)";
  }
  if (problems.Warnings() > 0 && command.strict) {
    return "has warnings, and --strict is given: nothing is played";
  }
  return "";
}

}  // namespace

std::vector<Script> LoadScripts(const RunCommand& command) {
  std::vector<Script> scripts;
  scripts.reserve(command.scripts.size());
  for (const std::string& path : command.scripts) {
    const std::string name = path == "-" ? "<stdin>" : path;
    scripts.push_back(
        {path, name, ScriptText(name, ReadScript(path, command.size_limit)), {}, false, {}});
  }
  bool play = true;
  for (Script& script : scripts) {
    Checked checked = Check(*script.text);
    checked.problems.Write(std::cerr, *script.text,
                           {command.quiet && !command.strict, WantsColour(STDERR_FILENO)});
    const std::string why = WhyNot(checked.problems, command);
    if (!why.empty()) Complain(fmt::format("{} {}", script.path, why));
    play = play && why.empty();
    script.plan = std::move(checked.plan);
    script.has_errors = checked.problems.HasErrors();
    script.problems = std::move(checked.problems);
  }
  if (!play) scripts.clear();
  return scripts;
}

}  // namespace icehost
