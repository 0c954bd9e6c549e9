// Fuzzes ImplementScr. An input is a script, a separator and the answers of the host. In an input
// without a separator, such as an example, every answer is 0.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "fuzz/checking_host.h"
#include "fuzz/harness.h"

namespace {

constexpr std::string_view kSeparator = "\n%%\n";

// A file in memory, because the plug-in needs a path. All runs share the file.
class ScriptFile {
 public:
  ScriptFile() : path_("/proc/self/fd/" + std::to_string(file_)) {}

  void Write(std::string_view script) const {
    const auto size = static_cast<ssize_t>(script.size());
    if (ftruncate(file_, 0) == 0 && pwrite(file_, script.data(), script.size(), 0) == size) return;
    std::perror("the script file");
    std::exit(2);
  }

  char* Path() { return path_.data(); }

 private:
  int file_ = memfd_create("script", MFD_CLOEXEC);
  std::string path_;
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::size_t end = input.find(kSeparator);
  const bool answered = end != std::string_view::npos;
  static ScriptFile file;
  file.Write(input.substr(0, end));
  CheckingHost(answered ? input.substr(end + kSeparator.size()) : "").Run(file.Path());
  return 0;
}
