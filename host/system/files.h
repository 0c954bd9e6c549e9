// Reads input files, makes files in memory, and tests whether two files are the same.
#ifndef ICESCRIPT_HOST_SYSTEM_FILES_H_
#define ICESCRIPT_HOST_SYSTEM_FILES_H_

#include <sys/stat.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace icehost {

// Returns the whole content of `path`; "-" is standard input. Throws IoError if it cannot be read
// or has more than `limit` bytes. Throws OutOfResources and Interrupted.
std::string ReadInput(const std::string& path, std::size_t limit);

// A file in memory, for a reader that needs a path. It exists as long as the object.
class MemoryFile {
 public:
  // Throws IoError.
  explicit MemoryFile(std::string_view content);
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  const std::string& Path() const { return path_; }

 private:
  int fd_;
  std::string path_;
};

// Return whether both arguments refer to the same file, terminal or pipe.
bool IsSameFile(const struct stat& one, const struct stat& other);
bool IsSameFile(int fd, int other);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_FILES_H_
