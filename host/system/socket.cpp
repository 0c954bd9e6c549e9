#include "host/system/socket.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <utility>

#include "host/system/errors.h"
#include "host/system/interrupt.h"

namespace icehost {
namespace {

constexpr Socket::Timeout kNoTimeout{-1};
constexpr std::string_view kUnixPrefix = "unix:";
constexpr int kHighestPort = 65535;

std::string ErrorText(int error) {
  return std::strerror(error);
}

sockaddr_un UnixAddress(const Endpoint& endpoint) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (endpoint.path.size() >= sizeof address.sun_path) {
    throw IoError(endpoint.Name() + ": the path is too long for a socket");
  }
  endpoint.path.copy(address.sun_path, endpoint.path.size());
  return address;
}

using AddressList = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

AddressList Resolve(const Endpoint& endpoint, int flags) {
  addrinfo hints = {};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = flags;
  addrinfo* found = nullptr;
  const int error = getaddrinfo(endpoint.host.c_str(), endpoint.port.c_str(), &hints, &found);
  if (error != 0) throw IoError(endpoint.Name() + ": " + gai_strerror(error));
  return {found, freeaddrinfo};
}

// Waits for a socket; false when the time is over.
bool WaitFor(int fd, short events, Socket::Timeout timeout) {
  pollfd waiting[] = {{fd, events, 0}, {InterruptFd(), POLLIN, 0}};
  const int ready = poll(waiting, 2, static_cast<int>(timeout.count()));
  ThrowIfInterrupted();
  return ready != 0;
}

// Connects within the time-out; 0 or the error.
int ConnectWithin(int fd, const sockaddr* address, socklen_t size, Socket::Timeout timeout) {
  if (connect(fd, address, size) == 0) return 0;
  if (errno != EINPROGRESS) return errno;
  if (!WaitFor(fd, POLLOUT, timeout)) return ETIMEDOUT;
  int error = 0;
  socklen_t error_size = sizeof error;
  getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &error_size);
  return error;
}

int NewSocket(int family) {
  return socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
}

// Without it every short write waits for the answer to the one before. Fails on a UNIX socket,
// which has no such delay.
void SetNoDelay(int fd) {
  const int on = 1;
  setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

// Binds a new socket and listens; the socket, or -1 with errno set.
int ListenOn(int family, const sockaddr* address, socklen_t size) {
  const int fd = NewSocket(family);
  if (fd < 0) return -1;
  const int on = 1;
  setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (bind(fd, address, size) == 0 && listen(fd, 1) == 0) return fd;
  const int error = errno;
  close(fd);
  errno = error;
  return -1;
}

// A socket file that nobody listens at any more is in the way of the next server. Any other file
// stays: connecting to one is refused as well.
void RemoveStaleSocket(const sockaddr_un& address) {
  struct stat status = {};
  if (lstat(address.sun_path, &status) != 0 || !S_ISSOCK(status.st_mode)) return;
  const int fd = NewSocket(AF_UNIX);
  const bool refused =
      connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 &&
      errno == ECONNREFUSED;
  close(fd);
  if (refused) unlink(address.sun_path);
}

}  // namespace

std::string Endpoint::Name() const {
  if (port.empty()) return std::string(kUnixPrefix) + path;
  return (host.find(':') != std::string::npos ? "[" + host + "]" : host) + ":" + port;
}

Endpoint ParseEndpoint(std::string_view text) {
  if (text.substr(0, kUnixPrefix.size()) == kUnixPrefix) {
    const std::string path(text.substr(kUnixPrefix.size()));
    if (path.empty()) throw std::invalid_argument("unix: needs a path");
    return {"", "", path};
  }
  const std::size_t colon = text.rfind(':');
  if (colon == std::string_view::npos || colon == 0 || colon + 1 == text.size()) {
    throw std::invalid_argument("expected HOST:PORT or unix:PATH, not \"" + std::string(text) +
                                "\"");
  }
  const std::string port(text.substr(colon + 1));
  const bool digits = port.find_first_not_of("0123456789") == std::string::npos;
  if (!digits || port.size() > 5 || std::stoi(port) > kHighestPort) {
    throw std::invalid_argument("\"" + port + "\" is no port from 0 to 65535");
  }
  std::string_view host = text.substr(0, colon);
  if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
    host = host.substr(1, host.size() - 2);
  }
  return {std::string(host), port, ""};
}

Socket Socket::Connect(const Endpoint& endpoint, Timeout timeout) {
  int error = 0;
  const auto attempt = [&](int family, const sockaddr* address, socklen_t size) {
    Socket socket(NewSocket(family), endpoint.Name(), timeout);
    error = ConnectWithin(socket.fd_, address, size, timeout);
    return socket;
  };
  if (endpoint.port.empty()) {
    const sockaddr_un address = UnixAddress(endpoint);
    Socket socket = attempt(AF_UNIX, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    if (error == 0) return socket;
  } else {
    const AddressList addresses = Resolve(endpoint, 0);
    for (const addrinfo* at = addresses.get(); at != nullptr; at = at->ai_next) {
      Socket socket = attempt(at->ai_family, at->ai_addr, at->ai_addrlen);
      if (error == 0) return socket;
    }
  }
  throw IoError(endpoint.Name() + ": cannot connect: " + ErrorText(error));
}

Socket::Socket(int fd, std::string name, Timeout timeout)
    : fd_(fd), name_(std::move(name)), timeout_(timeout) {
  if (fd_ < 0) Fail(ErrorText(errno));
  SetNoDelay(fd_);
}

Socket::~Socket() {
  if (fd_ >= 0) close(fd_);
}

Socket::Socket(Socket&& other) noexcept
    : fd_(std::exchange(other.fd_, -1)), name_(std::move(other.name_)), timeout_(other.timeout_) {}

void Socket::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    } else if (errno == EAGAIN) {
      Wait(POLLOUT);
    } else if (errno != EINTR) {
      Fail("connection lost: " + ErrorText(errno));
    }
    ThrowIfInterrupted();
  }
}

std::string Socket::Receive(std::size_t limit) {
  std::string bytes(limit, '\0');
  for (;;) {
    Wait(POLLIN);
    const ssize_t got = recv(fd_, bytes.data(), limit, 0);
    if (got >= 0) {
      bytes.resize(static_cast<std::size_t>(got));
      return bytes;
    }
    if (errno != EAGAIN && errno != EINTR) Fail("connection lost: " + ErrorText(errno));
  }
}

void Socket::Wait(short events) {
  if (!WaitFor(fd_, events, timeout_)) {
    Fail("no answer within " + std::to_string(timeout_.count()) + " ms");
  }
}

void Socket::Fail(const std::string& why) const {
  throw IoError(name_ + ": " + why);
}

Listener::Listener(const Endpoint& endpoint) : endpoint_(endpoint) {
  if (endpoint.port.empty()) {
    const sockaddr_un address = UnixAddress(endpoint);
    RemoveStaleSocket(address);
    fd_ = ListenOn(AF_UNIX, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  } else {
    const AddressList addresses = Resolve(endpoint, AI_PASSIVE);
    fd_ = ListenOn(addresses->ai_family, addresses->ai_addr, addresses->ai_addrlen);
  }
  if (fd_ < 0) throw IoError(endpoint.Name() + ": cannot listen: " + ErrorText(errno));
}

Listener::~Listener() {
  close(fd_);
  if (endpoint_.port.empty()) unlink(endpoint_.path.c_str());
}

std::string Listener::Name() const {
  sockaddr_storage address = {};
  socklen_t size = sizeof address;
  char port[NI_MAXSERV] = "";
  if (endpoint_.port.empty() ||
      getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &size) != 0 ||
      getnameinfo(reinterpret_cast<sockaddr*>(&address), size, nullptr, 0, port, sizeof port,
                  NI_NUMERICSERV) != 0) {
    return endpoint_.Name();
  }
  return Endpoint{endpoint_.host, port, ""}.Name();
}

Socket Listener::Accept() {
  for (;;) {
    WaitFor(fd_, POLLIN, kNoTimeout);
    const int client = accept4(fd_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (client >= 0) return {client, "client", kNoTimeout};
    if (errno != EAGAIN && errno != EINTR && errno != ECONNABORTED) {
      throw IoError(endpoint_.Name() + ": cannot accept: " + ErrorText(errno));
    }
  }
}

}  // namespace icehost
