// The connection of a client, TCP or UNIX.
#ifndef ICESCRIPT_HOST_SYSTEM_SOCKET_H_
#define ICESCRIPT_HOST_SYSTEM_SOCKET_H_

#include <asio/generic/stream_protocol.hpp>
#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "host/system/endpoint.h"

namespace icehost {

using StreamProtocol = asio::generic::stream_protocol;

// For one thread, the main one. Every wait ends with IoError after the time-out, and with
// Interrupted on a signal; IoError names the endpoint and the reason.
class Socket {
 public:
  using Timeout = std::chrono::milliseconds;

  static Socket Connect(const Endpoint& endpoint, Timeout timeout);
  // Takes over `fd`, of a connected UNIX socket.
  Socket(int fd, const std::string& name, Timeout timeout);

  void Send(std::string_view bytes);
  // Waits for at least one byte and returns what is there, at most `limit`; empty when the other
  // side has closed.
  std::string Receive(std::size_t limit);
  // Bytes that have come and were not received yet; where there are none, waits for some as long as
  // `patience`.
  std::size_t Pending(std::chrono::milliseconds patience = {});
  // Whether the other side has closed and nothing is left to receive. Waits for nothing.
  bool HasEnded();
  // The endpoint as the user named it.
  const std::string& Name() const { return name_; }

 private:
  using Addresses = std::vector<StreamProtocol::endpoint>;

  Socket(std::string name, Timeout timeout);
  asio::error_code ConnectTo(const StreamProtocol::endpoint& address);
  Addresses Resolve(const Endpoint& endpoint);
  template <class Result, class Begin>
  std::pair<asio::error_code, Result> Await(Begin begin);
  void AcknowledgeNow();
  [[noreturn]] void Lose(const asio::error_code& error) const;
  [[noreturn]] void Fail(const std::string& what, const asio::error_code& error) const;

  StreamProtocol::socket socket_;
  std::string name_;
  Timeout timeout_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_SOCKET_H_
