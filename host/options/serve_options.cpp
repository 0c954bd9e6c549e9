#include <stdexcept>

#include "host/options/option_values.h"
#include "host/options/shared_files.h"
#include "host/options/verb_options.h"
#include "host/options/verbs.h"

namespace icehost {
namespace {

constexpr char kOutputGroup[] = "Outputs: what clients do to the pins (FILE - is standard output)";

void RefuseOpenocd(const ServeCommand& serve) {
  if (serve.probe.choice.kind != ProbeChoice::Kind::kOpenocd) return;
  throw std::invalid_argument("OpenOCD takes whole scans, and a client of serve sets single pins");
}

}  // namespace

void AddServe(CLI::App& app, ServeCommand& serve) {
  CLI::App& verb =
      AddVerb(app, "serve", "Serve a target by the remote_bitbang protocol, until a signal ends it",
              serve.quiet);
  AddParsed(verb, "ENDPOINT", "",
            "tcp:PORT (on the loopback address), tcp:ADDRESS:PORT or unix:PATH",
            [&serve](const std::string& text) { serve.endpoint = ParseServeEndpoint(text); })
      ->required();
  verb.add_flag("-v,--verbose", serve.verbose, "Say when clients come and go");
  AddParsed(verb, "--idle-limit", "SECONDS",
            "How long a client may be silent until another takes its place (default 60)",
            [&serve](const std::string& text) { serve.idle_limit = ParseSeconds(text); });
  AddOutputs(verb, &OutputKind::serve, kOutputGroup, serve.outputs);
  AddProbe(verb, serve.probe);
  verb.get_option("--probe")->description(
      "What is served: sim (the default), or another server, to which everything is passed on:\n"
      "remote-bitbang:HOST:PORT or remote-bitbang:unix:PATH");
  verb.final_callback([&serve, &verb] {
    CompleteOutputs(serve.outputs);
    Refuse("", [&serve] { RefuseSharedFiles(serve); });
    Refuse("--verbose", [&serve] {
      if (serve.verbose && serve.quiet) throw std::invalid_argument("is against --quiet");
    });
    Refuse("--probe", [&serve] { RefuseOpenocd(serve); });
    RefuseUnfitProbe(verb, serve.probe);
  });
}

}  // namespace icehost
