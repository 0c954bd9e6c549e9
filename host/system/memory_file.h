// A file in memory, for what reads from a path only.
#ifndef ICESCRIPT_HOST_SYSTEM_MEMORY_FILE_H_
#define ICESCRIPT_HOST_SYSTEM_MEMORY_FILE_H_

#include <string>
#include <string_view>

namespace icehost {

// Lives as long as the object. Throws IoError where there is no room.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view content);
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  const std::string& Path() const { return path_; }

 private:
  int fd_;
  std::string path_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_MEMORY_FILE_H_
