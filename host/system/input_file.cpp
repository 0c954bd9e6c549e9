#include "host/system/input_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>

#include "host/system/errors.h"
#include "host/system/interrupt.h"

namespace icehost {
namespace {

constexpr int kLookForSignalsEvery = 100;  // ms

[[noreturn]] void Fail(const std::string& path) {
  throw IoError(path + ": " + std::strerror(errno));
}

// Not on the event loop: that would make the standard input of the user's shell non-blocking, which
// outlives this process.
std::string ReadAll(int fd, const std::string& path, std::size_t limit) {
  std::string content;
  struct stat status = {};
  if (fstat(fd, &status) == 0 && S_ISREG(status.st_mode)) {
    content.reserve(std::min(static_cast<std::size_t>(status.st_size), limit));
  }
  char buffer[1 << 16];
  for (;;) {
    pollfd waiting = {fd, POLLIN, 0};
    const int ready = poll(&waiting, 1, kLookForSignalsEvery);
    ThrowIfInterrupted();
    if (ready == 0) continue;
    const ssize_t got = read(fd, buffer, sizeof buffer);
    if (got == 0) return content;
    if (got < 0 && errno != EINTR && errno != EAGAIN) Fail(path);
    if (got > 0) content.append(buffer, static_cast<std::size_t>(got));
    if (content.size() > limit) {
      throw IoError(
          fmt::format("{}: is larger than {} MiB; --size-limit lets more in", path, limit >> 20U));
    }
  }
}

}  // namespace

std::string ReadInput(const std::string& path, std::size_t limit) try {
  if (path == "-") return ReadAll(STDIN_FILENO, path, limit);
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) Fail(path);
  if (S_ISDIR(status.st_mode)) throw IoError(path + ": is a directory");
  // Not to wait here for somebody to write into a FIFO: that wait would hear no signal.
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) Fail(path);
  const std::unique_ptr<const int, void (*)(const int*)> closer(
      &fd, [](const int* file) { close(*file); });
  return ReadAll(fd, path, limit);
} catch (const std::bad_alloc&) {
  throw IoError(path + ": out of memory");
}

}  // namespace icehost
