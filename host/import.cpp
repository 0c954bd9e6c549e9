#include <fmt/format.h>
#include <unistd.h>

#include <cstddef>
#include <new>
#include <string>

#include "host/check/file_kinds.h"
#include "host/svf/importer.h"
#include "host/system/errors.h"
#include "host/system/file_uses.h"
#include "host/system/files.h"
#include "host/system/output_file.h"
#include "host/system/standard_streams.h"
#include "host/verbs.h"

namespace icehost {
namespace {

void Write(const std::string& script, const ImportCommand& command) {
  OutputFile file(command.output, OutputFile::Rest::kNothing);
  FileUses({command.file}).AddOutput(file, "--output");
  file.WriteWhole(script);
}

ImportedSvf Import(const std::string& name, const std::string& svf, std::size_t most,
                   const Keeping& keeping) {
  const auto wrong = FindWrongKind(svf, FileUse::kSvf);
  if (!wrong.has_value()) return ImportSvf(name, svf, most, keeping);
  ImportedSvf refused;
  refused.problems.Error(wrong->place, wrong->text);
  return refused;
}

}  // namespace

ExitStatus Execute(const ImportCommand& command) {
  std::string svf;
  ImportedSvf imported;
  const std::string name = command.file == "-" ? "<stdin>" : command.file;
  try {
    svf = ReadInput(command.file, command.size_limit);
    imported = Import(name, svf, command.size_limit, command.all ? kKeepEach : kKeepReasons);
  } catch (const IoError& error) {
    Complain(error.what());
    return kScriptFailed;
  } catch (const std::bad_alloc&) {
    Complain(command.file + ": out of memory");
    return kNotOpened;
  }
  imported.problems.Write(StandardError(), name, svf, {command.quiet, WantsColour(STDERR_FILENO)});
  if (imported.problems.HasErrors()) {
    Complain(fmt::format("{} is not imported", command.file));
    return kScriptFailed;
  }
  try {
    Write(imported.script, command);
  } catch (const IoError& error) {
    Complain(error.what());
    return kNotOpened;
  }
  return kAllWell;
}

}  // namespace icehost
