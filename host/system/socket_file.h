#ifndef ICESCRIPT_HOST_SYSTEM_SOCKET_FILE_H_
#define ICESCRIPT_HOST_SYSTEM_SOCKET_FILE_H_

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string>

namespace icehost {

// The file of a listening UNIX socket. It exists as long as the object, unless somebody removes it.
class SocketFile {
 public:
  // Removes the file of a server that has ended, but no other file. Then calls `bind`, which must
  // create the new file. Locks the folder against other icehost processes during this time, and
  // waits up to `timeout` for the lock. Throws asio::system_error and Interrupted.
  SocketFile(const std::string& path, std::chrono::milliseconds timeout,
             const std::function<void()>& bind);
  // Removes the file, unless another server has replaced it. The socket must still be open.
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
