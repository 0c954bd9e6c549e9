#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "host/check/check.h"
#include "host/system/errors.h"
#include "host/system/file_uses.h"
#include "host/system/output_file.h"
#include "host/system/standard_streams.h"
#include "host/system/text.h"
#include "host/verbs.h"

namespace icehost {
namespace {

std::string Counted(long count, const char* what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

// Checks the scripts of a command line and writes the problems as text, JSON lines, or both.
class CheckReport {
 public:
  explicit CheckReport(const CheckCommand& command);

  ExitStatus WriteAll();

 private:
  ExitStatus WriteOne(const std::string& path);
  ExitStatus Refuse(const std::string& why, ExitStatus status);
  void WriteSummary();
  ExitStatus Close(ExitStatus status);

  const CheckCommand& command_;
  ReportStyle style_;
  OutputFile standard_output_;
  std::optional<OutputFile> file_;
  std::ostream* text_;            // null if the JSON lines go to standard output
  std::ostream* json_ = nullptr;  // null without --json; docs/json.md describes the lines
  // Totals for the scripts that could be read:
  long errors_ = 0;
  long warnings_ = 0;
  long scripts_ = 0;
};

// With --strict, warnings are failures, so they are shown even with --quiet.
CheckReport::CheckReport(const CheckCommand& command)
    : command_(command),
      style_{command.quiet && !command.strict, WantsColour(STDOUT_FILENO)},
      standard_output_("-", OutputFile::Rest::kLines),
      text_(&standard_output_.Stream()) {
  if (command.json == "-") {
    json_ = std::exchange(text_, nullptr);
  } else if (!command.json.empty()) {
    json_ = &file_.emplace(command.json, OutputFile::Rest::kLines).Stream();
  }
  FileUses uses(command.scripts);
  if (json_ != nullptr) uses.AddOutput(file_.has_value() ? *file_ : standard_output_, "--json");
}

ExitStatus CheckReport::WriteAll() {
  standard_output_.Begin();
  if (file_.has_value()) file_->Begin();
  if (json_ != nullptr) *json_ << "{\"schema\":\"icehost-check\",\"version\":1}\n";
  ExitStatus status = kAllWell;
  for (const std::string& path : command_.scripts) {
    if (json_ != nullptr) *json_ << fmt::format("{{\"script\":{}}}\n", JsonText(path));
    const ExitStatus one = WriteOne(path);
    if (json_ != nullptr) *json_ << fmt::format("{{\"end\":{}}}\n", one == kAllWell);
    status = std::max(status, one);
    standard_output_.Stream().flush();
    standard_output_.ThrowIfCut();
  }
  WriteSummary();
  return Close(status);
}

ExitStatus CheckReport::WriteOne(const std::string& path) try {
  const ScriptText script(path == "-" ? "<stdin>" : path, ReadScript(path, command_.size_limit));
  const Problems problems = CheckScript(script).problems;
  if (text_ != nullptr) problems.Write(*text_, script.Name(), script.Content(), style_);
  if (json_ != nullptr) problems.WriteJson(*json_);
  const long errors = problems.Errors();
  const long warnings = problems.Warnings();
  errors_ += errors;
  warnings_ += warnings;
  ++scripts_;
  return errors > 0 || (command_.strict && warnings > 0) ? kScriptFailed : kAllWell;
} catch (const IoError& error) {
  return Refuse(error.what(), kScriptFailed);
} catch (const OutOfResources& error) {
  return Refuse(error.what(), kNotOpened);
} catch (const std::bad_alloc&) {
  return Refuse(path + ": out of memory", kNotOpened);
}

ExitStatus CheckReport::Refuse(const std::string& why, ExitStatus status) {
  Complain(why);
  if (json_ != nullptr) *json_ << fmt::format("{{\"error\":{}}}\n", JsonText(why));
  return status;
}

// The text summary counts only the problems shown. It is omitted if no problems are shown.
void CheckReport::WriteSummary() {
  if (json_ != nullptr) {
    *json_ << fmt::format("{{\"errors\":{},\"warnings\":{},\"scripts\":{}}}\n", errors_, warnings_,
                          scripts_);
  }
  if (text_ == nullptr) return;
  std::string found;
  if (errors_ > 0) found = Counted(errors_, "error");
  if (warnings_ > 0 && !style_.errors_only) {
    found += (found.empty() ? "" : ", ") + Counted(warnings_, "warning");
  }
  if (!found.empty()) *text_ << fmt::format("{} in {}\n", found, Counted(scripts_, "file"));
}

ExitStatus CheckReport::Close(ExitStatus status) {
  for (OutputFile* const file : {&standard_output_, file_.has_value() ? &*file_ : nullptr}) {
    try {
      if (file != nullptr) file->Close();
    } catch (const IoError& error) {
      Complain(error.what());
      status = StatusOfLoss();
    }
  }
  return status;
}

}  // namespace

ExitStatus Execute(const CheckCommand& command) try {
  return CheckReport(command).WriteAll();
} catch (const IoError& error) {
  Complain(error.what());
  return kNotOpened;
}

}  // namespace icehost
