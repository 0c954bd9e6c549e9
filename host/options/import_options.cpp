#include "host/options/option_values.h"
#include "host/options/shared_files.h"
#include "host/options/verb_options.h"
#include "host/options/verbs.h"

namespace icehost {

void AddImport(CLI::App& app, ImportCommand& import) {
  CLI::App& verb = AddVerb(app, "import", "Make a JTAG script of a Serial Vector Format (SVF) file",
                           import.quiet);
  verb.add_option("FILE", import.file, "SVF file; - is standard input")->type_name("")->required();
  AddParsed(verb, "--size-limit", "MIB", "How large the file, and the script, may be (default 64)",
            [&import](const std::string& text) { import.size_limit = ParseMebibytes(text); });
  AddFile(verb, "-o,--output", import.output,
          "Write the script to a file, instead of standard output");
  verb.final_callback([&import] { Refuse("", [&import] { RefuseSharedFiles(import); }); });
}

}  // namespace icehost
