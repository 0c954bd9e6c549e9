#include "host/check_verb.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "host/check/check.h"
#include "host/system/errors.h"
#include "host/system/printable.h"

namespace icehost {
namespace {

bool WantsColour() {
  const char* const no_colour = std::getenv("NO_COLOR");
  return isatty(STDERR_FILENO) != 0 && (no_colour == nullptr || *no_colour == '\0');
}

// Whether it has no errors.
bool CheckOne(const std::string& path, ReportStyle style) {
  try {
    const ScriptText script(path == "-" ? "<stdin>" : path, ReadScript(path));
    Problems problems = Check(script);
    problems.Write(std::cerr, script, style);
    return !problems.HasErrors();
  } catch (const IoError& error) {
    fmt::print(stderr, "icehost: {}\n", Printable(error.what()));
    return false;
  }
}

}  // namespace

ExitStatus CheckScripts(const CheckCommand& command) {
  const ReportStyle style{command.quiet, WantsColour()};
  ExitStatus status = kAllWell;
  for (const std::string& path : command.scripts) {
    if (!CheckOne(path, style)) status = kScriptFailed;
  }
  return status;
}

}  // namespace icehost
