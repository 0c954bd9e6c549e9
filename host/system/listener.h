// A socket that listens, TCP or UNIX.
#ifndef ICESCRIPT_HOST_SYSTEM_LISTENER_H_
#define ICESCRIPT_HOST_SYSTEM_LISTENER_H_

#include <asio/basic_socket_acceptor.hpp>
#include <string>

#include "host/system/socket.h"

namespace icehost {

// Listens on the event loop, and keeps the file of a UNIX socket for as long.
class Listener {
 public:
  using Acceptor = asio::basic_socket_acceptor<StreamProtocol>;

  // Replaces the file of a UNIX socket that nobody listens at any more, and no other file. Throws
  // IoError.
  explicit Listener(const Endpoint& endpoint);
  ~Listener();
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  // The endpoint as a client names it, with the real port where port 0 was asked for.
  std::string Name() const;
  Acceptor& GetAcceptor() { return acceptor_; }

 private:
  Endpoint endpoint_;
  Acceptor acceptor_;
};

// Where the other end of a TCP connection is, as an Endpoint's Name; empty for a UNIX socket, whose
// other end has no name, and for one that is gone.
std::string PeerName(const StreamProtocol::socket& socket);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_LISTENER_H_
