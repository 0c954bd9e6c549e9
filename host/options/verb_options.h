// The options of the verbs.
#ifndef ICESCRIPT_HOST_OPTIONS_VERB_OPTIONS_H_
#define ICESCRIPT_HOST_OPTIONS_VERB_OPTIONS_H_

#include <CLI/CLI.hpp>

#include "host/options/commands.h"

namespace icehost {

// Each adds a verb to `app` and returns it. Parsing the command line then fills in the command.
CLI::App& AddVerb(CLI::App& app, RunCommand& run);
CLI::App& AddVerb(CLI::App& app, CheckCommand& check);
CLI::App& AddVerb(CLI::App& app, DetectCommand& detect);
CLI::App& AddVerb(CLI::App& app, ImportCommand& import);
CLI::App& AddVerb(CLI::App& app, ServeCommand& serve);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OPTIONS_VERB_OPTIONS_H_
