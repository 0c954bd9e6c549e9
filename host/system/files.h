// Files that icehost reads, files in memory, and which file is which.
#ifndef ICESCRIPT_HOST_SYSTEM_FILES_H_
#define ICESCRIPT_HOST_SYSTEM_FILES_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace icehost {

// Returns the whole content of `path`, where "-" is standard input, up to `limit` bytes. Throws
// IoError that says why it cannot, and Interrupted.
std::string ReadInput(const std::string& path, std::size_t limit);

// A file in memory, for a reader that opens a path. It exists as long as the object.
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

// Returns the same text for the same file, whatever path leads to it; a file that does not exist
// yet is known by its place. Empty for a terminal, a pipe and others that a second opening does not
// destroy.
std::string IdentityOf(const std::string& path);
// Returns the same text for an open descriptor; empty also if it is closed.
std::string IdentityOf(int fd);
// Returns whether both descriptors lead to the same file, terminal or pipe.
bool IsSameFile(int fd, int other);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_FILES_H_
