#include "host/system/socket_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <asio/local/datagram_protocol.hpp>
#include <asio/system_error.hpp>
#include <cerrno>
#include <filesystem>
#include <thread>

#include "host/system/interrupt.h"

namespace icehost {
namespace {

constexpr std::chrono::milliseconds kTryLockEvery{10};

[[noreturn]] void ThrowSystemError(int error) {
  throw asio::system_error(asio::error_code(error, asio::error::get_system_category()));
}

class FolderLock {
 public:
  explicit FolderLock(const std::string& folder)
      : fd_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (fd_ < 0) ThrowSystemError(errno);
  }
  ~FolderLock() { close(fd_); }
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

  void Acquire(std::chrono::milliseconds timeout) const {
    const auto end = std::chrono::steady_clock::now() + timeout;
    while (flock(fd_, LOCK_EX | LOCK_NB) != 0) {
      if (errno != EWOULDBLOCK) ThrowSystemError(errno);
      if (std::chrono::steady_clock::now() >= end) ThrowSystemError(EBUSY);
      ThrowIfInterrupted();
      std::this_thread::sleep_for(kTryLockEvery);
    }
  }

 private:
  int fd_;
};

// Tries a datagram connection, which the system refuses only if no process owns the socket. A
// running server does not notice the attempt, and need not listen yet.
bool HasEnded(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::is_socket(std::filesystem::symlink_status(path, ignored))) return false;
  asio::error_code error;
  asio::local::datagram_protocol::socket(EventLoop()).connect(path, error);
  return error == asio::error::connection_refused;
}

}  // namespace

SocketFile::SocketFile(const std::string& path, std::chrono::milliseconds timeout,
                       const std::function<void()>& bind)
    : path_(path) {
  const std::string folder = std::filesystem::path(path).parent_path();
  const FolderLock lock(folder.empty() ? "." : folder);
  lock.Acquire(timeout);
  if (HasEnded(path)) unlink(path.c_str());
  bind();
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0) ThrowSystemError(errno);
  device_ = status.st_dev;
  number_ = status.st_ino;
}

SocketFile::~SocketFile() {
  struct stat status = {};
  const bool there = lstat(path_.c_str(), &status) == 0;
  if (there && status.st_dev == device_ && status.st_ino == number_) unlink(path_.c_str());
}

}  // namespace icehost
