#ifndef ICESCRIPT_HOST_OPTIONS_VERB_OPTIONS_H_
#define ICESCRIPT_HOST_OPTIONS_VERB_OPTIONS_H_

#include <CLI/CLI.hpp>

#include "host/options/commands.h"

namespace icehost {

// Each function adds a verb with its options to `app`, and returns the verb. When `app` parses the
// command line, it fills in the second argument, which must exist until then.
CLI::App& AddVerb(CLI::App& app, RunCommand& run);
CLI::App& AddVerb(CLI::App& app, CheckCommand& check);
CLI::App& AddVerb(CLI::App& app, DetectCommand& detect);
CLI::App& AddVerb(CLI::App& app, ImportCommand& import);
CLI::App& AddVerb(CLI::App& app, ServeCommand& serve);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OPTIONS_VERB_OPTIONS_H_
