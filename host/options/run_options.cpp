#include <stdexcept>

#include "host/options/option_values.h"
#include "host/options/shared_files.h"
#include "host/options/verb_options.h"
#include "host/options/verbs.h"

namespace icehost {
namespace {

void AddRunOutputs(CLI::App& verb, RunCommand& run) {
  constexpr char kGroup[] =
      "Outputs (FILE - is standard output, where the plug-in's messages are then left out)";
  AddOutputs(verb, &OutputKind::run, kGroup, run.outputs);
  AddFile(verb, "--learn", run.learn,
          "Write the script with the values that were read as those it expects")
      ->group(kGroup);
  verb.add_flag("--summary", run.summary, "Say at the end what was done");
}

}  // namespace

void AddRun(CLI::App& app, RunCommand& run) {
  CLI::App& verb =
      AddVerb(app, "run", "Run scripts one after the other, up to the first that fails", run.quiet);
  AddScripts(verb, run.scripts, run.size_limit);
  AddProbe(verb, run.probe);
  verb.add_flag("--strict", run.strict,
                "Let warnings fail: those of check, and a captured IR that no TAP answers with");
  verb.add_flag("--force", run.force,
                "Play scripts with errors as the plug-in takes them, instead of none");
  verb.add_flag("--keep-going", run.keep_going,
                "Play on where a value is not the expected one, and fail at the end");
  AddRunOutputs(verb, run);
  verb.add_option("--plugin", run.plugin,
                  "The plug-in to load (default: the one built or installed with icehost)")
      ->type_name("FILE");
  AddParsed(verb, "--wire", "MODE", "The wire mode at the start: jtag5, 2wire or cjtag2",
            [&run](const std::string& text) { run.wire_mode = ParseWireMode(text); })
      ->group(kTargetGroup);
  verb.final_callback([&run, &verb] {
    CompleteOutputs(run.outputs);
    Refuse("", [&run] { RefuseSharedFiles(run); });
    Refuse("--learn", [&run] {
      if (!run.learn.empty() && run.scripts.size() > 1) {
        throw std::invalid_argument("takes one script");
      }
    });
    RefuseUnfitProbe(verb, run.probe);
  });
}

}  // namespace icehost
