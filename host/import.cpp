#include <fmt/format.h>

#include <cstdio>
#include <new>
#include <string>

#include "host/svf/importer.h"
#include "host/system/errors.h"
#include "host/system/files.h"
#include "host/system/output_file.h"
#include "host/system/standard_streams.h"
#include "host/system/text.h"
#include "host/verbs.h"

namespace icehost {
namespace {

void Show(const std::string& name, const Problems& problems, bool quiet) {
  for (const Problem& problem : problems.Found()) {
    if (quiet && !problem.error) continue;
    const std::string line =
        fmt::format("{}:{}:{}: {}: {}", name, problem.place.line, problem.place.column,
                    problem.error ? "error" : "warning", problem.text);
    std::fputs((Printable(line) + "\n").c_str(), stderr);
  }
}

void Write(const std::string& script, const std::string& path) {
  OutputFile file(path, OutputFile::Rest::kNothing);
  file.Begin();
  file.Stream() << script;
  file.Close();
}

}  // namespace

ExitStatus Execute(const ImportCommand& command) {
  ImportedSvf imported;
  const std::string name = command.file == "-" ? "<stdin>" : command.file;
  try {
    imported = ImportSvf(name, ReadInput(command.file, command.size_limit), command.size_limit);
  } catch (const IoError& error) {
    Complain(error.what());
    return kScriptFailed;
  } catch (const std::bad_alloc&) {
    Complain(command.file + ": out of memory");
    return kNotOpened;
  }
  Show(name, imported.problems, command.quiet);
  if (imported.problems.HasErrors()) {
    Complain(fmt::format("{} is not imported", command.file));
    return kScriptFailed;
  }
  try {
    Write(imported.script, command.output);
  } catch (const IoError& error) {
    Complain(error.what());
    return kNotOpened;
  }
  return kAllWell;
}

}  // namespace icehost
