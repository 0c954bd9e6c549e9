#include "host/system/memory_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "host/system/errors.h"

namespace icehost {

MemoryFile::MemoryFile(std::string_view content) : fd_(memfd_create("script", MFD_CLOEXEC)) {
  path_ = "/proc/self/fd/" + std::to_string(fd_);
  while (fd_ >= 0 && !content.empty()) {
    const ssize_t written = write(fd_, content.data(), content.size());
    if (written < 0) break;
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  if (!content.empty() || fd_ < 0) {
    const int error = errno;
    if (fd_ >= 0) close(fd_);
    throw IoError(std::string("cannot keep a script in memory: ") + std::strerror(error));
  }
}

MemoryFile::~MemoryFile() {
  close(fd_);
}

}  // namespace icehost
