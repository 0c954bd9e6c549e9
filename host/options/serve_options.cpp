#include "host/options/option_values.h"
#include "host/options/verb_options.h"
#include "host/options/verbs.h"

namespace icehost {

void AddServe(CLI::App& app, ServeCommand& serve) {
  CLI::App& verb =
      AddVerb(app, "serve",
              "Serve the simulated target by the remote_bitbang protocol, until a signal ends it",
              serve.quiet);
  AddParsed(verb, "ENDPOINT", "",
            "tcp:PORT (on the loopback address), tcp:ADDRESS:PORT or unix:PATH",
            [&serve](const std::string& text) { serve.endpoint = ParseServeEndpoint(text); })
      ->required();
  AddParsed(verb, "--idle-limit", "SECONDS",
            "How long a client may be silent until another takes its place (default 60)",
            [&serve](const std::string& text) { serve.idle_limit = ParseSeconds(text); });
  AddTargetOptions(verb, serve.probe.target);
  verb.final_callback([&serve, &verb] { RefuseUnfitProbe(verb, serve.probe); });
}

}  // namespace icehost
