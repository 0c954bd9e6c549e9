#ifndef ICESCRIPT_HOST_SYSTEM_FILE_USES_H_
#define ICESCRIPT_HOST_SYSTEM_FILE_USES_H_

#include <sys/stat.h>

#include <string>
#include <vector>

#include "host/system/output_file.h"

namespace icehost {

// Detects outputs that would overwrite another file of the same command. Compares the files instead
// of their paths, so links make no difference.
class FileUses {
 public:
  // Registers the command's inputs: `scripts` ("-" is standard input) and `plugin` (may be empty).
  explicit FileUses(const std::vector<std::string>& scripts = {}, const std::string& plugin = "");

  // Registers a file that `option` writes, before the file is begun. Throws BadUsage if the file
  // has another use, unless it is a terminal or a device such as /dev/null.
  void AddOutput(const OutputFile& file, const std::string& option);

 private:
  struct Use {
    struct stat status;
    std::string what;
    bool standard;  // standard output or standard error
  };

  void AddInput(const std::string& path, const char* what);
  void AddStandardStream(int fd, const char* what);

  std::vector<Use> uses_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_FILE_USES_H_
