#include "host/command_line.h"

#include <CLI/CLI.hpp>

#include "host/plugin.h"

namespace icehost {

std::variant<RunCommand, ExitStatus> ParseCommandLine(int argc, char** argv) {
  CLI::App app("icehost runs GPIO and JTAG scripts for a debug probe on a simulated target.",
               "icehost");
  app.set_version_flag("--version", "icehost " ICEHOST_VERSION);
  app.require_subcommand(1);
  app.footer(
      "Exit status: 0 all scripts ran, 1 a script failed, 2 bad usage, 3 the plug-in could not be "
      "loaded.");

  RunCommand run;
  run.plugin = DefaultPluginPath();
  CLI::App* const run_verb =
      app.add_subcommand("run", "Run scripts one after the other, up to the first that fails");
  run_verb->add_option("SCRIPT", run.scripts, "Script files")->required();
  run_verb->add_option("--plugin", run.plugin, "The plug-in to load")->capture_default_str();

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kAllRan : kBadUsage;
  }
  return run;
}

}  // namespace icehost
