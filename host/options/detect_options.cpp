#include <stdexcept>

#include "host/options/verb_options.h"
#include "host/options/verbs.h"

namespace icehost {
namespace {

// Given without a kind, the text is empty.
ScriptKind ParseScriptKind(const std::string& text) {
  if (text.empty() || text == "jtag") return ScriptKind::kJtag;
  if (text == "gpio") return ScriptKind::kGpio;
  throw std::invalid_argument("expected jtag or gpio");
}

}  // namespace

void AddDetect(CLI::App& app, DetectCommand& detect) {
  CLI::App& verb = AddVerb(app, "detect", "Tell which TAPs are on a probe", detect.quiet);
  AddProbe(verb, detect.probe);
  AddParsed(verb, "--script", "[KIND]",
            "Write the beginning of a script, jtag (the default) or gpio, to standard\n"
            "output (and the report to standard error)",
            [&detect](const std::string& text) { detect.script = ParseScriptKind(text); })
      ->expected(0, 1);
  verb.final_callback([&detect, &verb] {
    RefuseUnfitProbe(verb, detect.probe);
    Refuse("--script", [&detect] {
      const bool openocd = detect.probe.choice.kind == ProbeChoice::Kind::kOpenocd;
      if (openocd && detect.script == ScriptKind::kGpio) {
        throw std::invalid_argument("GPIO scripts do not run on OpenOCD");
      }
    });
  });
}

}  // namespace icehost
