#include "host/system/files.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "host/system/errors.h"
#include "host/system/interrupt.h"

namespace icehost {
namespace {

constexpr int kLookForSignalsEvery = 100;  // ms

[[noreturn]] void Fail(const std::string& path) {
  const int error = errno;
  const std::string what = path + ": " + std::strerror(error);
  if (error == EMFILE || error == ENFILE || error == ENOMEM) throw OutOfResources(what);
  throw IoError(what);
}

// Avoids the event loop, which would leave standard input non-blocking for the user's shell.
std::string ReadAll(int fd, const std::string& path, std::size_t limit) {
  std::string content;
  struct stat status = {};
  if (fstat(fd, &status) == 0 && S_ISREG(status.st_mode)) {
    content.reserve(std::min(static_cast<std::size_t>(status.st_size), limit));
  }
  std::vector<char> buffer(1 << 16);
  for (;;) {
    pollfd waiting = {fd, POLLIN, 0};
    const int ready = poll(&waiting, 1, kLookForSignalsEvery);
    ThrowIfInterrupted();
    if (ready == 0) continue;
    const ssize_t got = read(fd, buffer.data(), buffer.size());
    if (got == 0) return content;
    if (got < 0 && errno != EINTR && errno != EAGAIN) Fail(path);
    if (got > 0) content.append(buffer.data(), static_cast<std::size_t>(got));
    if (content.size() > limit) {
      throw IoError(
          fmt::format("{}: larger than {} MiB (--size-limit allows more)", path, limit >> 20U));
    }
  }
}

bool WriteAll(int fd, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = write(fd, content.data(), content.size());
    if (written < 0) return false;
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// The plug-in would blame the script if it could not open the file, so icehost tests that first.
bool CanBeOpened(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd >= 0) close(fd);
  return fd >= 0;
}

}  // namespace

std::string ReadInput(const std::string& path, std::size_t limit) try {
  if (path == "-") return ReadAll(STDIN_FILENO, path, limit);
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) Fail(path);
  if (S_ISDIR(status.st_mode)) throw IoError(path + ": is a directory");
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) Fail(path);
  const std::unique_ptr<const int, void (*)(const int*)> closer(
      &fd, [](const int* file) { close(*file); });
  return ReadAll(fd, path, limit);
} catch (const std::bad_alloc&) {
  throw OutOfResources(path + ": out of memory");
}

MemoryFile::MemoryFile(std::string_view content)
    : fd_(memfd_create("script", MFD_CLOEXEC)), path_(fmt::format("/proc/self/fd/{}", fd_)) {
  if (fd_ >= 0 && WriteAll(fd_, content) && CanBeOpened(path_)) return;
  const int error = errno;
  if (fd_ >= 0) close(fd_);
  throw IoError(fmt::format("cannot keep a script in memory: {}{}", fd_ >= 0 ? path_ + ": " : "",
                            std::strerror(error)));
}

MemoryFile::~MemoryFile() {
  close(fd_);
}

bool IsSameFile(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

bool IsSameFile(int fd, int other) {
  struct stat one = {};
  struct stat two = {};
  return fstat(fd, &one) == 0 && fstat(other, &two) == 0 && IsSameFile(one, two);
}

}  // namespace icehost
