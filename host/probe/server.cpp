#include "host/probe/server.h"

#include <fmt/format.h>
#include <netinet/tcp.h>
#include <poll.h>

#include <array>
#include <asio/write.hpp>
#include <optional>
#include <utility>

#include "host/system/errors.h"
#include "host/system/interrupt.h"

namespace icehost {
namespace {

using Clock = std::chrono::steady_clock;

// The server reads at most this many bytes before it answers them, to limit its buffers.
constexpr std::size_t kReadAtOnce = 4096;
// The interval between checks of a port that nobody uses.
constexpr std::chrono::seconds kLookAtPort{1};
// The longest time that a new client waits while the current client sends without a pause.
constexpr std::chrono::seconds kNewcomerWaits{1};
// How long the server continues to process received bytes after a signal.
constexpr std::chrono::milliseconds kLastWork{200};

// Makes TCP notice within two minutes that a client's machine is gone. The calls fail for a UNIX
// socket, which does not need them.
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

// Runs the handler of one finished operation. Returns false if no operation has finished.
bool EndOperation() {
  EventLoop().restart();
  return EventLoop().poll_one() > 0;
}

}  // namespace

// The port waits on the server's event loop, so the handlers below may run while the port works.
// They only record what arrived, and Server::Work does the rest.

struct Server::Arrival {
  std::optional<StreamProtocol::socket> socket;
  asio::error_code error;
  Clock::time_point came;
};

struct Server::Client {
  explicit Client(StreamProtocol::socket connection) : socket(std::move(connection)) {}

  static void Read(const std::shared_ptr<Client>& client) {
    client->socket.async_receive(asio::buffer(client->bytes),
                                 [client](const asio::error_code& error, std::size_t count) {
                                   client->received = count;
                                   client->gone = static_cast<bool>(error);
                                 });
  }
  // Sends the answers. Then reads more if `open` is true.
  static void Write(const std::shared_ptr<Client>& client, bool open) {
    const auto read_on = [client, open](const asio::error_code& error, std::size_t /*sent*/) {
      client->gone = error || !open;
      if (!client->gone) Read(client);
    };
    std::string_view rest = client->answers;
    const asio::error_code error = SendAtOnce(client->socket, rest);
    if (error || rest.empty()) {
      read_on(error, 0);
    } else {
      asio::async_write(client->socket, asio::buffer(rest), read_on);
    }
  }

  // Returns whether the client has closed its end. Some of its bytes may still be unread.
  bool HasLeft() {
    pollfd ended = {socket.native_handle(), POLLRDHUP, 0};
    return poll(&ended, 1, 0) > 0;
  }

  StreamProtocol::socket socket;
  std::array<char, kReadAtOnce> bytes{};
  std::size_t received = 0;  // the number of bytes that have not been processed yet
  std::string answers;
  bool gone = false;
  Clock::time_point last_heard = Clock::now();
};

Server::Server(Listener& listener, PinPort& port, Session& session,
               std::chrono::milliseconds idle_limit, Observer& observer)
    : listener_(listener),
      port_(port),
      session_(session),
      idle_limit_(idle_limit),
      observer_(observer),
      arrival_(std::make_shared<Arrival>()) {}

void Server::Run() {
  Accept();
  while (!IsInterrupted()) {
    Wait();
    while (Work()) ThrowIfInterrupted();
  }
  const Clock::time_point end = Clock::now() + kLastWork;
  while (Work() || EndOperation()) {
    if (Clock::now() > end) throw Interrupted();
  }
}

bool Server::OwesAPart() const {
  return client_ != nullptr && !client_->gone && (plays_ || client_->HasLeft());
}

// Waits for an event. After a signal, does not check the port, whose server may have ended, too.
void Server::Wait() {
  asio::io_context& loop = EventLoop();
  loop.restart();
  if (IsInterrupted()) return;
  if (loop.run_one_for(kLookAtPort) == 0 && !IsInterrupted()) port_.CheckAlive();
}

void Server::Accept() {
  listener_.GetAcceptor().async_accept(
      [arrival = arrival_](const asio::error_code& error, StreamProtocol::socket socket) {
        arrival->socket.emplace(std::move(socket));
        arrival->error = error;
        arrival->came = Clock::now();
      });
}

// Handles one event, or returns false if there is none. Handles a new client only after all events
// of the current client, because one of these may report that the current client has left.
bool Server::Work() {
  if (client_ != nullptr && client_->received > 0) {
    Answer();
  } else if (client_ != nullptr && client_->gone) {
    Dismiss();
  } else if (arrival_->socket.has_value()) {
    const bool overdue = Clock::now() - arrival_->came > kNewcomerWaits;
    if (overdue || !EndOperation()) Admit();
  } else {
    return false;
  }
  return true;
}

void Server::Admit() {
  StreamProtocol::socket socket = std::move(*arrival_->socket);
  arrival_->socket.reset();
  if (arrival_->error) {
    throw IoError(
        fmt::format("{}: cannot accept a client: {}", listener_.Name(), arrival_->error.message()));
  }
  Accept();
  if (client_ != nullptr) {
    if (Clock::now() - client_->last_heard < idle_limit_) {
      observer_.OnRefusal("a client was refused because another one is connected");
      return;
    }
    observer_.OnRefusal("a silent client was disconnected to accept another one");
    Dismiss();
  }
  SetTcpOptions(socket.native_handle());
  client_ = std::make_shared<Client>(std::move(socket));
  session_.Begin();
  observer_.OnClient(PeerName(client_->socket));
  Client::Read(client_);
}

void Server::Answer() {
  const std::size_t received = std::exchange(client_->received, 0);
  client_->answers.clear();
  observer_.OnBytes(received);
  plays_ = true;
  const bool open = session_.Feed({client_->bytes.data(), received}, client_->answers);
  plays_ = false;
  client_->last_heard = Clock::now();
  observer_.OnDone();
  if (const std::string fault = session_.Fault(); !fault.empty()) observer_.OnFault(fault);
  Client::Write(client_, open);
}

void Server::Dismiss() {
  asio::error_code ignored;
  client_->socket.close(ignored);
  client_.reset();
  observer_.OnClientLeft();
}

}  // namespace icehost
