// Sockets, TCP or UNIX: the connection of a client, and one that listens.
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

// For one thread, the main one. Every wait ends with IoError after the time-out, and with
// Interrupted on a signal; IoError names the endpoint and the reason.
class Socket {
 public:
  using Timeout = std::chrono::milliseconds;
  // How long an answer too many may come after the last one that was asked for.
  static constexpr Timeout kStragglers{10};

  // Calls `again` after each attempt that fails, until it throws; without it there is one attempt.
  static Socket Connect(const Endpoint& endpoint, Timeout timeout,
                        const std::function<void()>& again = nullptr);
  // Returns whether something accepts connections there, by making one.
  static bool IsTaken(const Endpoint& endpoint, Timeout timeout);
  // Takes over `fd`, of a connected UNIX socket.
  Socket(int fd, const std::string& name, Timeout timeout);

  void Send(std::string_view bytes);
  // Waits for at least one byte and returns what is there, at most `limit`; empty when the other
  // side has closed.
  std::string Receive(std::size_t limit);
  // Returns the number of bytes that have come and were not received yet; if there are none, waits
  // for some as long as `patience`.
  std::size_t Pending(std::chrono::milliseconds patience = {});
  // Returns whether the other side has closed and nothing is left to receive. Does not wait.
  bool HasEnded();
  // Ends the error about a connection that is lost before anything was received.
  void AdviseOnLoss(std::string advice) { advice_ = std::move(advice); }
  // Throws the error that `who`, on the other side, has closed the connection.
  [[noreturn]] void FailClosed(const std::string& who) const;
  // Throws the error that it has sent what it was not asked for.
  [[noreturn]] void FailOutOfStep() const;
  // To be called last; no signal ends it. Sends those of the bytes that the system takes without
  // waiting. Receives and drops so many `answers`, for as long as `patience`: a server that writes
  // to a closed connection may miss the bytes, or die.
  void TakeLeave(std::string_view bytes, std::size_t answers, std::chrono::milliseconds patience);
  // The endpoint as the user named it.
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
  bool acknowledged_ = true;  // everything that was received
  bool received_ = false;     // anything
  std::string advice_;
};

// Sends those of the bytes that the system takes without waiting, which saves a turn of the event
// loop, and removes them. Returns an error other than that it takes none now.
asio::error_code SendAtOnce(StreamProtocol::socket& socket, std::string_view& bytes);

// Listens on the event loop.
class Listener {
 public:
  using Acceptor = asio::basic_socket_acceptor<StreamProtocol>;

  // Makes the file of a UNIX socket, a SocketFile. Throws IoError, or Interrupted.
  Listener(const Endpoint& endpoint, std::chrono::milliseconds timeout);

  // Returns the endpoint as a client names it, with the real port instead of port 0.
  std::string Name() const;
  Acceptor& GetAcceptor() { return acceptor_; }

 private:
  Endpoint endpoint_;
  Acceptor acceptor_;
  std::optional<SocketFile> file_;  // goes before the socket is closed
};

// Returns the other end of a TCP connection as an Endpoint's Name; empty for a UNIX socket, whose
// other end has no name, and for a lost connection.
std::string PeerName(const StreamProtocol::socket& socket);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_SOCKET_H_
