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
#include "host/system/interrupt.h"
#include "host/system/output_file.h"
#include "host/system/progress.h"
#include "host/system/standard_streams.h"
#include "host/verbs.h"

namespace icehost {
namespace {

// Imports one SVF file in two passes, because the script may be too large to keep in memory. The
// first pass checks the text, and the second pass writes the script.
class Import {
 public:
  explicit Import(const ImportCommand& command)
      : command_(command), progress_(!command.quiet && isatty(STDERR_FILENO) != 0) {}

  ExitStatus Execute();

 private:
  ExitStatus Check();
  Problems FindProblems();
  void Write();
  SvfImport Options() const;
  std::string OtherForm() const;
  void Show(const char* what, std::size_t bytes);

  const ImportCommand& command_;
  std::string name_ = command_.file == "-" ? "<stdin>" : command_.file;
  std::string svf_;
  Progress progress_;
};

ExitStatus Import::Execute() try {
  const ExitStatus status = Check();
  if (status != kAllWell) return status;
  try {
    Write();
  } catch (const IoError& error) {
    Complain(error.what());
    return kNotOpened;
  }
  return kAllWell;
} catch (const IoError& error) {
  Complain(error.what());
  return kScriptFailed;
} catch (const std::bad_alloc&) {
  Complain(command_.file + ": out of memory");
  return kNotOpened;
}

SvfImport Import::Options() const {
  return {name_, command_.script == ScriptKind::kGpio, command_.tck_hz, command_.size_limit,
          command_.all ? kKeepEach : kKeepReasons};
}

ExitStatus Import::Check() {
  svf_ = ReadInput(command_.file, command_.size_limit);
  const Problems problems = FindProblems();
  progress_.Erase();
  problems.Write(StandardError(), name_, svf_, {command_.quiet, WantsColour(STDERR_FILENO)});
  if (!problems.HasErrors()) return kAllWell;
  Complain(fmt::format("{} was not imported{}", command_.file, OtherForm()));
  return kScriptFailed;
}

Problems Import::FindProblems() {
  const auto wrong = FindWrongKind(svf_, FileUse::kSvf);
  if (!wrong.has_value()) {
    return ImportSvf(Options(), svf_, nullptr, [&](std::size_t bytes) { Show("read", bytes); });
  }
  Problems problems;
  problems.Error(wrong->place, wrong->text);
  return problems;
}

// Returns a hint if only a GPIO script can express the file, and an empty text otherwise.
std::string Import::OtherForm() const {
  SvfImport import = Options();
  if (import.gpio) return "";
  import.gpio = true;
  for (const char* const rate : {"", " --tck-hz N"}) {
    if (*rate != '\0') import.tck_hz = 1e6;
    if (ImportSvf(import, svf_, nullptr, [](std::size_t) {}).HasErrors()) continue;
    return fmt::format("; icehost import --script gpio{} can convert it", rate);
  }
  return "";
}

void Import::Write() {
  OutputFile file(command_.output, OutputFile::Rest::kNothing);
  FileUses({command_.file}).AddOutput(file, "--output");
  file.Begin();
  try {
    ImportSvf(Options(), svf_, &file.Stream(), [&](std::size_t bytes) {
      file.ThrowIfCut();
      Show("written", bytes);
    });
    file.Stream().flush();
    file.ThrowIfCut();
  } catch (...) {
    file.Abandon();
    throw;
  }
  progress_.Erase();
  file.Close();
}

void Import::Show(const char* what, std::size_t bytes) {
  if (!progress_.IsDue()) return;
  progress_.Draw(fmt::format("{} % {}", 100 * bytes / svf_.size(), what));
}

}  // namespace

ExitStatus Execute(const ImportCommand& command) {
  return Import(command).Execute();
}

}  // namespace icehost
