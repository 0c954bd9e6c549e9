#include "host/options/shared_files.h"
#include "host/options/verb_options.h"
#include "host/options/verbs.h"

namespace icehost {

void AddCheck(CLI::App& app, CheckCommand& check) {
  CLI::App& verb = AddVerb(app, "check", "Report every problem of scripts without touching a probe",
                           check.quiet);
  AddScripts(verb, check.scripts, check.size_limit);
  verb.add_flag("--strict", check.strict, "Let warnings fail");
  AddFile(verb, "--json", check.json,
          "Write the problems as JSON lines; - is standard output, in place of the text");
  verb.final_callback([&check] { Refuse("", [&check] { RefuseSharedFiles(check); }); });
}

}  // namespace icehost
