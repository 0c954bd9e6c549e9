// TCP and UNIX sockets: a connection, and a socket that listens.
#ifndef ICESCRIPT_HOST_SYSTEM_SOCKET_H_
#define ICESCRIPT_HOST_SYSTEM_SOCKET_H_

#include <asio/basic_socket_acceptor.hpp>
#include <asio/generic/stream_protocol.hpp>
#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/system/endpoint.h"
#include "host/system/socket_file.h"

namespace icehost {

using StreamProtocol = asio::generic::stream_protocol;

// A connection, for the main thread only. Functions that wait throw IoError after the time-out, and
// Interrupted after a signal. The text of an IoError contains the endpoint and the reason.
class Socket {
 public:
  using Timeout = std::chrono::milliseconds;
  // How long to wait for surplus answers after the last expected answer.
  static constexpr Timeout kStragglers{10};

  // Connects. After each failed attempt, calls `again`, which throws to give up, and tries again.
  // If `again` is null, tries only once.
  static Socket Connect(const Endpoint& endpoint, Timeout timeout,
                        const std::function<void()>& again = nullptr);
  // Returns whether a server accepts connections at `endpoint`. Makes a connection to find out.
  static bool IsTaken(const Endpoint& endpoint, Timeout timeout);
  // Takes ownership of `fd`, a connected UNIX socket. `name` is its name in messages.
  Socket(int fd, const std::string& name, Timeout timeout);

  void Send(std::string_view bytes);
  // Waits for bytes, and returns up to `limit`; none if the other side has closed the connection.
  std::string Receive(std::size_t limit);
  // Returns the number of bytes that have arrived but were not received yet. If there are none,
  // waits up to `patience` for the first.
  std::size_t Pending(std::chrono::milliseconds patience = {});
  // Returns whether the other side has closed the connection and no bytes are left. Does not wait.
  bool HasEnded();
  // Adds `advice` to the error message if the connection is lost before anything was received.
  void AdviseOnLoss(std::string advice) { advice_ = std::move(advice); }
  // Throw an IoError. The first says that the other side, called `who`, has closed the connection.
  // The second says that the other side has sent surplus bytes.
  [[noreturn]] void FailClosed(const std::string& who) const;
  [[noreturn]] void FailOutOfStep() const;
  // Sends as many of `bytes` as the system accepts without waiting. Then receives and drops
  // `answers` bytes, and waits up to `patience` for them, even after a signal. Otherwise the server
  // would write to a closed connection, and could miss `bytes` or crash. Must be the last call.
  void TakeLeave(std::string_view bytes, std::size_t answers, std::chrono::milliseconds patience);
  // Returns the name of the endpoint for messages.
  const std::string& Name() const { return name_; }

 private:
  using Addresses = std::vector<StreamProtocol::endpoint>;

  Socket(std::string name, Timeout timeout);
  asio::error_code ConnectToAny(const Addresses& addresses);
  asio::error_code ConnectTo(const StreamProtocol::endpoint& address);
  bool IsConnectedToItself() const;
  Addresses Resolve(const Endpoint& endpoint);
  template <class Result, class Begin>
  std::pair<asio::error_code, Result> Await(Begin begin);
  void AcknowledgeNow();
  [[noreturn]] void Lose(const asio::error_code& error) const;
  std::string Advice() const;
  [[noreturn]] void Fail(const std::string& what, const asio::error_code& error) const;

  StreamProtocol::socket socket_;
  std::string name_;
  Timeout timeout_;
  bool acknowledged_ = true;  // all received bytes were acknowledged
  bool received_ = false;     // at least one byte was received
  std::string advice_;
};

// Sends as many of `bytes` as the system accepts without waiting, and removes them from `bytes`. It
// is not an error if the system accepts no bytes at the moment.
asio::error_code SendAtOnce(StreamProtocol::socket& socket, std::string_view& bytes);

// A listening socket on the event loop.
class Listener {
 public:
  using Acceptor = asio::basic_socket_acceptor<StreamProtocol>;

  // Listens on `endpoint`. For a UNIX socket, waits up to `timeout` for the lock of its folder (see
  // SocketFile). Throws IoError and Interrupted.
  Listener(const Endpoint& endpoint, std::chrono::milliseconds timeout);

  // Returns the endpoint for clients, with the real port instead of port 0.
  std::string Name() const;
  Acceptor& GetAcceptor() { return acceptor_; }

 private:
  Endpoint endpoint_;
  Acceptor acceptor_;
  std::optional<SocketFile> file_;  // must be removed before the socket is closed
};

// Returns the other end of a TCP connection in the form of Endpoint::Name. Returns an empty text if
// the connection is lost, or if it uses a UNIX socket, whose other end has no name.
std::string PeerName(const StreamProtocol::socket& socket);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_SOCKET_H_
