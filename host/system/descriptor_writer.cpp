#include "host/system/descriptor_writer.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "host/system/interrupt.h"

namespace icehost {
namespace {

constexpr std::size_t kPipePiece = PIPE_BUF;  // a pipe that is ready accepts this much at once
constexpr int kSignalPollInterval = 100;      // ms

bool HasReader(int fd) {
  struct stat status = {};
  return fstat(fd, &status) == 0 && !S_ISREG(status.st_mode);
}

}  // namespace

DescriptorWriter::DescriptorWriter(int fd) : fd_(fd), has_reader_(HasReader(fd)) {}

void DescriptorWriter::AwaitReader() {
  pollfd waiting = {fd_, POLLOUT, 0};
  while (poll(&waiting, 1, kSignalPollInterval) == 0) {
    if (!IsInterrupted()) continue;
    error_ = EINTR;
    return;
  }
}

bool DescriptorWriter::Write(std::string_view bytes) {
  while (error_ == 0 && !bytes.empty()) {
    std::size_t size = bytes.size();
    if (has_reader_) {
      AwaitReader();
      if (error_ != 0) break;
      size = std::min(size, kPipePiece);
    }
    const ssize_t written = write(fd_, bytes.data(), size);
    if (written >= 0) bytes.remove_prefix(static_cast<std::size_t>(written));
    if (written < 0 && errno != EINTR && errno != EAGAIN) error_ = errno;
  }
  return error_ == 0;
}

}  // namespace icehost
