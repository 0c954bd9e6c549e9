#include "host/load_scripts.h"

#include <fmt/format.h>
#include <unistd.h>

#include <iostream>
#include <utility>

#include "host/check/check.h"
#include "host/colour.h"
#include "host/reporter.h"

namespace icehost {
namespace {

// Why a script with these problems is not played; empty where it is.
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
    CheckResult result = CheckScript(*script.text);
    result.problems.Write(std::cerr, script.name, script.text->Content(),
                          {command.quiet && !command.strict, WantsColour(STDERR_FILENO)});
    const std::string why = WhyNot(result.problems, command);
    if (!why.empty()) Complain(fmt::format("{} {}", script.path, why));
    play = play && why.empty();
    script.plan = std::move(result.plan);
    script.has_errors = result.problems.HasErrors();
    script.problems = std::move(result.problems);
  }
  if (!play) scripts.clear();
  return scripts;
}

}  // namespace icehost
