#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "host/check/check.h"
#include "host/check/check_stream.h"
#include "host/system/errors.h"
#include "host/system/output_file.h"
#include "host/system/standard_streams.h"
#include "host/verbs.h"

namespace icehost {
namespace {

std::string Counted(long count, const char* what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

class Checker {
 public:
  explicit Checker(const CheckCommand& command);

  ExitStatus CheckAll();

 private:
  // The status of one script.
  ExitStatus CheckOne(const std::string& path);
  ExitStatus Judge(const std::string& path);
  ExitStatus Refuse(const std::string& why, ExitStatus status);
  void WriteSummary();
  ExitStatus Close(ExitStatus status);

  const CheckCommand& command_;
  ReportStyle style_;
  OutputFile standard_output_;
  std::optional<OutputFile> file_;
  std::ostream* text_;  // null where the JSON lines take its place
  std::optional<CheckStream> json_;
  CheckCounts counts_;
};

// What fails is shown also where only errors are to be.
Checker::Checker(const CheckCommand& command)
    : command_(command),
      style_{command.quiet && !command.strict, WantsColour(STDOUT_FILENO)},
      standard_output_("-", OutputFile::Rest::kLines),
      text_(&standard_output_.Stream()) {
  if (command.json == "-") {
    json_.emplace(*std::exchange(text_, nullptr));
  } else if (!command.json.empty()) {
    json_.emplace(file_.emplace(command.json, OutputFile::Rest::kLines).Stream());
  }
}

ExitStatus Checker::CheckAll() {
  standard_output_.Begin();
  if (file_.has_value()) file_->Begin();
  if (json_.has_value()) json_->Begin();
  ExitStatus status = kAllWell;
  for (const std::string& path : command_.scripts) {
    status = std::max(status, CheckOne(path));
    standard_output_.Stream().flush();
    standard_output_.ThrowIfCut();
  }
  if (text_ != nullptr) WriteSummary();
  if (json_.has_value()) json_->End(counts_);
  return Close(status);
}

ExitStatus Checker::CheckOne(const std::string& path) {
  if (json_.has_value()) json_->BeginScript(path);
  const ExitStatus status = Judge(path);
  if (json_.has_value()) json_->EndScript(status == kAllWell);
  return status;
}

ExitStatus Checker::Judge(const std::string& path) try {
  const ScriptText script(path == "-" ? "<stdin>" : path, ReadScript(path, command_.size_limit));
  const Problems problems = Check(script).problems;
  if (text_ != nullptr) problems.Write(*text_, script, style_);
  if (json_.has_value()) json_->Write(problems);
  const long errors = problems.Errors();
  const long warnings = problems.Warnings();
  counts_.errors += errors;
  counts_.warnings += warnings;
  ++counts_.scripts;
  return errors > 0 || (command_.strict && warnings > 0) ? kScriptFailed : kAllWell;
} catch (const IoError& error) {
  return Refuse(error.what(), kScriptFailed);
} catch (const std::bad_alloc&) {
  return Refuse(path + ": out of memory", kNotOpened);
}

ExitStatus Checker::Refuse(const std::string& why, ExitStatus status) {
  Complain(why);
  if (json_.has_value()) json_->WriteError(why);
  return status;
}

// Of what was shown; nothing where nothing was.
void Checker::WriteSummary() {
  std::string found;
  if (counts_.errors > 0) found = Counted(counts_.errors, "error");
  if (counts_.warnings > 0 && !style_.errors_only) {
    found += (found.empty() ? "" : ", ") + Counted(counts_.warnings, "warning");
  }
  if (!found.empty()) *text_ << fmt::format("{} in {}\n", found, Counted(counts_.scripts, "file"));
}

ExitStatus Checker::Close(ExitStatus status) {
  for (OutputFile* const file : {&standard_output_, file_.has_value() ? &*file_ : nullptr}) {
    try {
      if (file != nullptr) file->Close();
    } catch (const IoError& error) {
      Complain(error.what());
      status = kNotOpened;
    }
  }
  return status;
}

}  // namespace

ExitStatus Execute(const CheckCommand& command) try {
  return Checker(command).CheckAll();
} catch (const IoError& error) {
  Complain(error.what());
  return kNotOpened;
}

}  // namespace icehost
