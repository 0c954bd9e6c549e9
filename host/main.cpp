// icehost: runs scripts without a debug server.
#include <cstdio>
#include <exception>
#include <optional>

#include "host/command_line.h"
#include "host/pin_probe.h"
#include "host/plugin.h"
#include "host/sim_port.h"

namespace icehost {
namespace {

// Messages are shown as they stand: some are pieces of a line.
int Show(const char* message) {
  return std::fputs(message, stdout);
}

ExitStatus Run(const RunCommand& command) {
  std::optional<Plugin> plugin;
  try {
    plugin.emplace(command.plugin);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "icehost: cannot load the plug-in: %s\n", error.what());
    return kNotLoaded;
  }
  SimPort port{TargetOptions{}};
  PinProbe probe(port, CDI_ANSWER_JTAG5, true);
  for (const std::string& script : command.scripts) {
    const bool ran = plugin->Run(probe, script, Show);
    std::fflush(stdout);
    if (!ran) {
      std::fprintf(stderr, "icehost: %s failed\n", script.c_str());
      return kScriptFailed;
    }
  }
  return kAllRan;
}

}  // namespace
}  // namespace icehost

int main(int argc, char** argv) {
  using namespace icehost;
  const auto command = ParseCommandLine(argc, argv);
  if (const auto* status = std::get_if<ExitStatus>(&command)) return *status;
  return Run(std::get<RunCommand>(command));
}
