#include "host/system/socket.h"

#include <fmt/format.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <asio/ip/tcp.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/write.hpp>
#include <cerrno>
#include <memory>
#include <optional>
#include <utility>
#include <variant>

#include "host/system/errors.h"
#include "host/system/interrupt.h"

namespace icehost {
namespace {

using asio::ip::tcp;

StreamProtocol::endpoint Address(const Endpoint& endpoint) {
  if (endpoint.IsUnix()) return asio::local::stream_protocol::endpoint(endpoint.path);
  return tcp::resolver(EventLoop())
      .resolve(endpoint.host, endpoint.port, tcp::resolver::passive)
      .begin()
      ->endpoint();
}

tcp::endpoint TcpAddress(const StreamProtocol::endpoint& generic) {
  tcp::endpoint address;
  std::copy_n(reinterpret_cast<const char*>(generic.data()), generic.size(),
              reinterpret_cast<char*>(address.data()));
  return address;
}

}  // namespace

Socket::Socket(std::string name, Timeout timeout)
    : socket_(EventLoop()), name_(std::move(name)), timeout_(timeout) {}

Socket::Socket(int fd, const std::string& name, Timeout timeout) : Socket(name, timeout) {
  socket_.assign(StreamProtocol(asio::local::stream_protocol()), fd);
}

Socket Socket::Connect(const Endpoint& endpoint, Timeout timeout,
                       const std::function<void()>& again) {
  Socket socket(endpoint.Name(), timeout);
  const Addresses addresses = socket.Resolve(endpoint);
  while (const asio::error_code error = socket.ConnectToAny(addresses)) {
    if (again == nullptr) socket.Fail("cannot connect", error);
    again();
  }
  // Without this option, each short write would wait until the previous one is acknowledged. The
  // error is ignored, because a UNIX socket has no such option.
  asio::error_code ignored;
  socket.socket_.set_option(tcp::no_delay(true), ignored);
  return socket;
}

bool Socket::IsTaken(const Endpoint& endpoint, Timeout timeout) {
  Socket socket(endpoint.Name(), timeout);
  return !socket.ConnectToAny(socket.Resolve(endpoint));
}

asio::error_code Socket::ConnectToAny(const Addresses& addresses) {
  asio::error_code error = asio::error::host_not_found;
  for (const StreamProtocol::endpoint& address : addresses) {
    error = ConnectTo(address);
    if (!error) break;
  }
  return error;
}

asio::error_code Socket::ConnectTo(const StreamProtocol::endpoint& address) {
  asio::error_code error;
  socket_.close();
  socket_.open(address.protocol(), error);
  if (error) return error;
  error = Await<std::monostate>([&](auto done) {
            socket_.async_connect(address, [done](const asio::error_code& outcome) {
              done(outcome, std::monostate());
            });
          }).first;
  if (error || !IsConnectedToItself()) return error;
  socket_.set_option(asio::socket_base::linger(true, 0));  // a server can then use the port at once
  socket_.close();
  return asio::error::connection_refused;
}

// If no server listens on a local port, TCP may connect a client to itself through this port.
bool Socket::IsConnectedToItself() const {
  asio::error_code error;  // the next operation reports this error
  const StreamProtocol::endpoint local = socket_.local_endpoint(error);
  return local == socket_.remote_endpoint(error) && !error;
}

Socket::Addresses Socket::Resolve(const Endpoint& endpoint) try {
  if (endpoint.IsUnix()) return {asio::local::stream_protocol::endpoint(endpoint.path)};
  tcp::resolver resolver(EventLoop());
  const auto [error, found] = Await<tcp::resolver::results_type>(
      [&](auto done) { resolver.async_resolve(endpoint.host, endpoint.port, std::move(done)); });
  if (error) Fail("cannot look up the host", error);
  Addresses addresses;
  for (const auto& entry : found) addresses.emplace_back(entry.endpoint());
  return addresses;
} catch (const asio::system_error& error) {
  Fail("cannot connect", error.code());  // the path of a UNIX socket is too long
}

void Socket::Send(std::string_view bytes) {
  if (bytes.empty()) return;
  ThrowIfInterrupted();
  acknowledged_ = true;
  if (const asio::error_code error = SendAtOnce(socket_, bytes)) Lose(error);
  if (bytes.empty()) return;
  const auto [error, sent] = Await<std::size_t>(
      [&](auto done) { asio::async_write(socket_, asio::buffer(bytes), std::move(done)); });
  if (error) Lose(error);
}

std::string Socket::Receive(std::size_t limit) {
  AcknowledgeNow();
  std::string bytes(limit, '\0');
  const auto [error, got] = Await<std::size_t>(
      [&](auto done) { socket_.async_receive(asio::buffer(bytes), std::move(done)); });
  if (error && error != asio::error::eof) Lose(error);
  acknowledged_ = false;
  received_ = received_ || got > 0;
  bytes.resize(got);
  return bytes;
}

std::size_t Socket::Pending(std::chrono::milliseconds patience) {
  asio::error_code none;  // the next operation reports an error
  pollfd readable = {socket_.native_handle(), POLLIN, 0};
  if (patience.count() > 0) {
    AcknowledgeNow();
    poll(&readable, 1, static_cast<int>(patience.count()));
  }
  return socket_.available(none);
}

void Socket::TakeLeave(std::string_view bytes, std::size_t answers,
                       std::chrono::milliseconds patience) {
  SendAtOnce(socket_, bytes);
  const auto end = std::chrono::steady_clock::now() + patience;
  std::array<char, 4096> taken;
  while (answers > 0) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    pollfd readable = {socket_.native_handle(), POLLIN, 0};
    if (poll(&readable, 1, std::max(0, static_cast<int>(left.count()))) <= 0) return;
    const ssize_t got = recv(readable.fd, taken.data(), taken.size(), MSG_DONTWAIT);
    if (got <= 0) return;
    answers -= std::min(answers, static_cast<std::size_t>(got));
  }
}

bool Socket::HasEnded() {
  char byte = 0;
  const ssize_t got = recv(socket_.native_handle(), &byte, 1, MSG_PEEK | MSG_DONTWAIT);
  if (got < 0 && errno != EAGAIN) {
    Lose(asio::error_code(errno, asio::error::get_system_category()));
  }
  return got == 0;
}

// Without this option, a server that uses Nagle's algorithm waits up to 40 ms between its answers.
// Sent bytes also carry acknowledgements, so only a wait needs it. The system soon resets it.
void Socket::AcknowledgeNow() {
  if (std::exchange(acknowledged_, true)) return;
  const int on = 1;
  setsockopt(socket_.native_handle(), IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
}

// Starts an operation, and waits until it ends or the timeout expires. The handler shares ownership
// of the outcome, because an abandoned operation may end later.
template <class Result, class Begin>
std::pair<asio::error_code, Result> Socket::Await(Begin begin) {
  using Outcome = std::pair<asio::error_code, Result>;
  const auto outcome = std::make_shared<std::optional<Outcome>>();
  const auto deadline = std::chrono::steady_clock::now() + timeout_;
  ThrowIfInterrupted();
  begin([outcome](const asio::error_code& error, Result result) {
    outcome->emplace(error, std::move(result));
  });
  while (!outcome->has_value() && AwaitOperation(deadline)) {
  }
  if (outcome->has_value()) return std::move(**outcome);
  asio::error_code ignored;
  socket_.cancel(ignored);
  ThrowIfInterrupted();
  return {asio::error::timed_out, {}};
}

void Socket::Lose(const asio::error_code& error) const {
  if (error != asio::error::timed_out) {
    throw IoError(fmt::format("{}: connection lost: {}{}", name_, error.message(), Advice()));
  }
  throw IoError(fmt::format("{}: no answer within {} ms", name_, timeout_.count()));
}

void Socket::FailClosed(const std::string& who) const {
  throw IoError(fmt::format("{}: {} closed the connection{}", name_, who, Advice()));
}

void Socket::FailOutOfStep() const {
  throw IoError(fmt::format("{}: the server sent an unexpected answer", name_));
}

std::string Socket::Advice() const {
  return received_ || advice_.empty() ? "" : fmt::format(" ({})", advice_);
}

void Socket::Fail(const std::string& what, const asio::error_code& error) const {
  throw IoError(fmt::format("{}: {}: {}", name_, what, error.message()));
}

asio::error_code SendAtOnce(StreamProtocol::socket& socket, std::string_view& bytes) {
  const ssize_t sent =
      send(socket.native_handle(), bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  if (sent >= 0) {
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  } else if (errno != EAGAIN) {
    return asio::error_code(errno, asio::error::get_system_category());
  }
  return {};
}

Listener::Listener(const Endpoint& endpoint, std::chrono::milliseconds timeout) try
    : endpoint_(endpoint), acceptor_(EventLoop()) {
  const StreamProtocol::endpoint address = Address(endpoint);
  acceptor_.open(address.protocol());
  acceptor_.set_option(asio::socket_base::reuse_address(true));
  const auto bind = [&] { acceptor_.bind(address); };
  if (endpoint.IsUnix()) {
    file_.emplace(endpoint.path, timeout, bind);
  } else {
    bind();
  }
  acceptor_.listen();
} catch (const asio::system_error& error) {
  throw IoError(fmt::format("{}: cannot listen: {}", endpoint.Name(), error.code().message()));
}

std::string Listener::Name() const {
  if (endpoint_.IsUnix()) return endpoint_.Name();
  const unsigned short port = TcpAddress(acceptor_.local_endpoint()).port();
  return Endpoint{endpoint_.host, std::to_string(port), ""}.Name();
}

std::string PeerName(const StreamProtocol::socket& socket) {
  asio::error_code error;
  const StreamProtocol::endpoint peer = socket.remote_endpoint(error);
  if (error || peer.protocol().family() == AF_UNIX) return "";
  const tcp::endpoint address = TcpAddress(peer);
  return Endpoint{address.address().to_string(), std::to_string(address.port()), ""}.Name();
}

}  // namespace icehost
