// Stream sockets, TCP and UNIX.
#ifndef ICESCRIPT_HOST_SYSTEM_SOCKET_H_
#define ICESCRIPT_HOST_SYSTEM_SOCKET_H_

#include <chrono>
#include <string>
#include <string_view>

namespace icehost {

// Where to connect to or to listen: a TCP host and port, or the path of a UNIX socket.
struct Endpoint {
  std::string host;
  std::string port;  // empty for a UNIX socket
  std::string path;

  std::string Name() const;
};

// "HOST:PORT" or "unix:PATH", an IPv6 address in brackets. Throws std::invalid_argument.
Endpoint ParseEndpoint(std::string_view text);

// One connection. Every wait ends with IoError after the time-out, and with Interrupted on a
// signal; IoError names the endpoint and the reason.
class Socket {
 public:
  using Timeout = std::chrono::milliseconds;

  static Socket Connect(const Endpoint& endpoint, Timeout timeout);
  // Takes over `fd`.
  Socket(int fd, std::string name, Timeout timeout);
  ~Socket();
  Socket(Socket&& other) noexcept;
  Socket& operator=(Socket&&) = delete;

  void Send(std::string_view bytes);
  // Waits for at least one byte and returns what is there, at most `limit`; empty when the other
  // side has closed.
  std::string Receive(std::size_t limit);
  // The endpoint as the user named it.
  const std::string& Name() const { return name_; }

 private:
  void Wait(short events);
  [[noreturn]] void Fail(const std::string& why) const;

  int fd_;
  std::string name_;
  Timeout timeout_;
};

// A socket that listens, and while it does, its file for a UNIX socket.
class Listener {
 public:
  // Throws IoError.
  explicit Listener(const Endpoint& endpoint);
  ~Listener();
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  // The endpoint as a client names it, with the real port where port 0 was asked for.
  std::string Name() const;
  // Waits for the next client, whose waits have no time-out. Throws Interrupted.
  Socket Accept();

 private:
  int fd_;
  Endpoint endpoint_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_SOCKET_H_
