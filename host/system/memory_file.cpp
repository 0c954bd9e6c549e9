#include "host/system/memory_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "host/system/errors.h"

namespace icehost {
namespace {

bool WriteAll(int fd, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = write(fd, content.data(), content.size());
    if (written < 0) return false;
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// Tried here, where the reason can be told: who fails to open the file later blames the script.
bool CanBeOpened(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd >= 0) close(fd);
  return fd >= 0;
}

}  // namespace

MemoryFile::MemoryFile(std::string_view content)
    : fd_(memfd_create("script", MFD_CLOEXEC)), path_(fmt::format("/proc/self/fd/{}", fd_)) {
  if (fd_ >= 0 && WriteAll(fd_, content) && CanBeOpened(path_)) return;
  const int error = errno;
  if (fd_ >= 0) close(fd_);
  throw IoError(fmt::format("cannot keep a script in memory: {}", std::strerror(error)));
}

MemoryFile::~MemoryFile() {
  close(fd_);
}

}  // namespace icehost
