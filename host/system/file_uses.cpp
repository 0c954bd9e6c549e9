#include "host/system/file_uses.h"

#include <fmt/format.h>
#include <unistd.h>

#include "host/system/errors.h"
#include "host/system/files.h"

namespace icehost {

FileUses::FileUses(const std::vector<std::string>& scripts, const std::string& plugin) {
  AddStandardStream(STDOUT_FILENO, "standard output");
  AddStandardStream(STDERR_FILENO, "standard error");
  for (const std::string& script : scripts) AddInput(script, "a script");
  AddInput(plugin, "the plug-in");
}

void FileUses::AddStandardStream(int fd, const char* what) {
  struct stat status = {};
  if (fstat(fd, &status) == 0) uses_.push_back({status, what, true});
}

// Records only regular files, because an output cannot overwrite a pipe, socket or terminal.
void FileUses::AddInput(const std::string& path, const char* what) {
  struct stat status = {};
  const int failed = path == "-" ? fstat(STDIN_FILENO, &status) : stat(path.c_str(), &status);
  if (failed == 0 && S_ISREG(status.st_mode)) uses_.push_back({status, what, false});
}

void FileUses::AddOutput(const OutputFile& file, const std::string& option) {
  const bool standard = file.IsStandardOutput();
  const struct stat status = file.Status();
  if (!standard && S_ISCHR(status.st_mode)) return;
  for (const Use& use : uses_) {
    if ((standard && use.standard) || !IsSameFile(status, use.status)) continue;
    throw BadUsage(fmt::format("{}: {} is also {}", option, file.Path(), use.what));
  }
  uses_.push_back({status, "used by " + option, false});
}

}  // namespace icehost
