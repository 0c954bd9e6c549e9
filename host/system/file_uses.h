// What the files of one command are used for.
#ifndef ICESCRIPT_HOST_SYSTEM_FILE_USES_H_
#define ICESCRIPT_HOST_SYSTEM_FILE_USES_H_

#include <sys/stat.h>

#include <string>
#include <vector>

#include "host/system/output_file.h"

namespace icehost {

// Refuses an output that would destroy another file of its command. Compares the files themselves:
// it does not matter which path leads to one.
class FileUses {
 public:
  // The command reads the scripts, "-" being standard input, and the plug-in.
  explicit FileUses(const std::vector<std::string>& scripts = {}, const std::string& plugin = "");

  // An option writes the file, which is open and not begun. Throws BadUsage if the file has another
  // use. A terminal, or a device such as /dev/null, may have many.
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
