#include "host/check_verb.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <new>
#include <string>

#include "host/check/check.h"
#include "host/reporter.h"
#include "host/system/errors.h"

namespace icehost {
namespace {

bool WantsColour() {
  const char* const no_colour = std::getenv("NO_COLOR");
  return isatty(STDERR_FILENO) != 0 && (no_colour == nullptr || *no_colour == '\0');
}

ExitStatus CheckOne(const std::string& path, std::size_t size_limit, ReportStyle style) {
  try {
    const ScriptText script(path == "-" ? "<stdin>" : path, ReadScript(path, size_limit));
    Problems problems = Check(script).problems;
    problems.Write(std::cerr, script, style);
    return problems.HasErrors() ? kScriptFailed : kAllWell;
  } catch (const IoError& error) {
    Complain(error.what());
    return kScriptFailed;
  } catch (const std::bad_alloc&) {
    Complain(path + ": out of memory");
    return kNotOpened;
  }
}

}  // namespace

ExitStatus CheckScripts(const CheckCommand& command) {
  const ReportStyle style{command.quiet, WantsColour()};
  ExitStatus status = kAllWell;
  for (const std::string& path : command.scripts) {
    status = std::max(status, CheckOne(path, command.size_limit, style));
  }
  return status;
}

}  // namespace icehost
