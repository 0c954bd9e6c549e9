// The verbs' options: each function adds a verb that fills in its command.
#ifndef ICESCRIPT_HOST_OPTIONS_VERBS_H_
#define ICESCRIPT_HOST_OPTIONS_VERBS_H_

#include <CLI/CLI.hpp>

#include "host/options/commands.h"

namespace icehost {

void AddRun(CLI::App& app, RunCommand& run);
void AddCheck(CLI::App& app, CheckCommand& check);
void AddImport(CLI::App& app, ImportCommand& import);
void AddServe(CLI::App& app, ServeCommand& serve);
void AddDetect(CLI::App& app, DetectCommand& detect);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OPTIONS_VERBS_H_
