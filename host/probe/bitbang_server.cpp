#include "host/probe/bitbang_server.h"

#include <fmt/format.h>
#include <netinet/tcp.h>

#include <array>
#include <asio/write.hpp>
#include <utility>

#include "host/system/errors.h"
#include "host/system/interrupt.h"
#include "host/target/pin_names.h"

namespace icehost {
namespace {

// Bounds what is buffered: the answers to so many bytes are sent before more are read.
constexpr std::size_t kReadAtOnce = 4096;

// A client whose machine is gone is noticed after two minutes. None of the options is known to a
// UNIX socket, whose other end cannot vanish.
void SetTcpOptions(int fd) {
  constexpr struct {
    int level, name, value;
  } kOptions[] = {{IPPROTO_TCP, TCP_NODELAY, 1},
                  {SOL_SOCKET, SO_KEEPALIVE, 1},
                  {IPPROTO_TCP, TCP_KEEPIDLE, 60},
                  {IPPROTO_TCP, TCP_KEEPINTVL, 20},
                  {IPPROTO_TCP, TCP_KEEPCNT, 3}};
  for (const auto& option : kOptions) {
    setsockopt(fd, option.level, option.name, &option.value, sizeof option.value);
  }
}

}  // namespace

bool BitbangSession::Feed(std::string_view bytes, std::string& answers) {
  for (const char byte : bytes) {
    if (byte == 'Q') return false;
    if (byte >= '0' && byte <= '7') SetPins(byte - '0');
    if (byte >= 'r' && byte <= 'u') SetResets(byte - 'r');
    if (byte == 'R') answers += (port_.Read() & GPIO_PIN_TDO) != 0 ? '1' : '0';
  }
  return true;
}

void BitbangSession::SetPins(int bits) {
  levels_ &= GPIO_PIN_NRST | GPIO_PIN_TRST;
  levels_ |= ((bits & 4) != 0 ? GPIO_PIN_TCK : 0) | ((bits & 2) != 0 ? GPIO_PIN_TMS : 0) |
             ((bits & 1) != 0 ? GPIO_PIN_TDI : 0);
  port_.Write(levels_, kDrivenPins);
}

// 1 asserts a reset, which drives its line low.
void BitbangSession::SetResets(int bits) {
  levels_ |= GPIO_PIN_NRST | GPIO_PIN_TRST;
  levels_ &= ~(((bits & 2) != 0 ? GPIO_PIN_TRST : 0) | ((bits & 1) != 0 ? GPIO_PIN_NRST : 0));
  port_.Write(levels_, kDrivenPins);
}

struct BitbangServer::Client {
  using Clock = std::chrono::steady_clock;

  Client(StreamProtocol::socket connection, PinPort& port)
      : socket(std::move(connection)), session(port) {}

  StreamProtocol::socket socket;
  BitbangSession session;
  std::array<char, kReadAtOnce> received{};
  std::string answers;
  Clock::time_point last_heard = Clock::now();
};

BitbangServer::BitbangServer(Listener& listener, PinPort& port,
                             std::chrono::milliseconds idle_limit, Say say)
    : listener_(listener), port_(port), idle_limit_(idle_limit), say_(std::move(say)) {}

void BitbangServer::Run() {
  asio::io_context& loop = EventLoop();
  Accept();
  for (;;) {
    loop.restart();
    ThrowIfInterrupted();
    loop.run();
  }
}

void BitbangServer::Accept() {
  listener_.GetAcceptor().async_accept(
      [this](const asio::error_code& error, StreamProtocol::socket socket) {
        if (error) {
          throw IoError(fmt::format("{}: cannot accept: {}", listener_.Name(), error.message()));
        }
        Receive(std::move(socket));
        Accept();
      });
}

void BitbangServer::Receive(StreamProtocol::socket socket) {
  if (const auto present = client_.lock()) {
    if (Client::Clock::now() - present->last_heard < idle_limit_) {
      say_("busy: a second client was sent away");
      return;
    }
    say_("a client that had been silent made room for another");
    present->socket.close();
  }
  SetTcpOptions(socket.native_handle());
  const auto client = std::make_shared<Client>(std::move(socket), port_);
  client_ = client;
  Read(client);
}

void BitbangServer::Read(const std::shared_ptr<Client>& client) {
  client->socket.async_receive(asio::buffer(client->received),
                               [this, client](const asio::error_code& error, std::size_t received) {
                                 if (!error) Answer(client, received);
                               });
}

void BitbangServer::Answer(const std::shared_ptr<Client>& client, std::size_t received) {
  client->last_heard = Client::Clock::now();
  client->answers.clear();
  const bool open = client->session.Feed({client->received.data(), received}, client->answers);
  asio::async_write(client->socket, asio::buffer(client->answers),
                    [this, client, open](const asio::error_code& error, std::size_t /*sent*/) {
                      if (!error && open) Read(client);
                    });
}

}  // namespace icehost
