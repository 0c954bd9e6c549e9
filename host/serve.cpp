#include "host/serve.h"

#include "host/probe/bitbang_server.h"
#include "host/probe/sim_port.h"
#include "host/reporter.h"
#include "host/system/errors.h"

namespace icehost {

ExitStatus Serve(const ServeCommand& command) {
  const auto say = [&command](const std::string& text) {
    if (!command.quiet) Complain(text);
  };
  try {
    SimPort port(command.probe.target);
    Listener listener(command.endpoint);
    say("serving remote_bitbang on " + listener.Name());
    BitbangServer(listener, port, command.idle_limit, say).Run();
  } catch (const Interrupted&) {
    return kAllWell;  // that is how serving ends
  } catch (const IoError& error) {
    Complain(error.what());
    return kNotOpened;
  }
}

}  // namespace icehost
