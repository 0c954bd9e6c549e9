// The file of a UNIX socket that listens.
#ifndef ICESCRIPT_HOST_SYSTEM_SOCKET_FILE_H_
#define ICESCRIPT_HOST_SYSTEM_SOCKET_FILE_H_

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string>

namespace icehost {

// Exists as long as the object, unless somebody else removes it.
class SocketFile {
 public:
  // Removes the file of a server that has ended, and no other file; then calls `bind`, which makes
  // the new file. No other icehost does the same in this folder meanwhile; it is waited for as long
  // as the time-out. Throws asio::system_error, or Interrupted.
  SocketFile(const std::string& path, std::chrono::milliseconds timeout,
             const std::function<void()>& bind);
  // To be called while the socket is open. Leaves the file of another server, which has taken the
  // place.
  ~SocketFile();
  SocketFile(const SocketFile&) = delete;
  SocketFile& operator=(const SocketFile&) = delete;

 private:
  std::string path_;
  dev_t device_ = 0;
  ino_t number_ = 0;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_SOCKET_FILE_H_
