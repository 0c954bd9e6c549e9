// icehost: runs and checks scripts without a debug server.
#include <cstdio>
#include <exception>

#include "host/check_verb.h"
#include "host/command_line.h"
#include "host/probe/bitbang_server.h"
#include "host/probe/sim_port.h"
#include "host/run.h"
#include "host/system/errors.h"
#include "host/system/interrupt.h"

namespace icehost {
namespace {

ExitStatus Execute(const RunCommand& command) {
  return Run(command);
}

ExitStatus Execute(const CheckCommand& command) {
  return CheckScripts(command);
}

ExitStatus Execute(const ServeCommand& command) {
  try {
    SimPort port(command.target);
    Listener listener(command.endpoint);
    if (!command.quiet) {
      std::fprintf(stderr, "icehost: serving remote_bitbang on %s\n", listener.Name().c_str());
    }
    Serve(listener, port);
  } catch (const Interrupted&) {
    return kAllWell;  // that is how serving ends
  } catch (const IoError& error) {
    std::fprintf(stderr, "icehost: %s\n", error.what());
    return kNotOpened;
  }
}

}  // namespace
}  // namespace icehost

int main(int argc, char** argv) {
  using namespace icehost;
  try {
    const auto parsed = ParseCommandLine(argc, argv);
    if (const auto* status = std::get_if<ExitStatus>(&parsed)) return *status;
    CatchInterrupts();
    return std::visit([](const auto& command) { return Execute(command); },
                      std::get<Command>(parsed));
  } catch (const Interrupted& error) {
    std::fprintf(stderr, "icehost: %s\n", error.what());
    return kInterrupted;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "icehost: %s\n", error.what());
    return kNotOpened;
  }
}
