// A remote_bitbang server.
#ifndef ICESCRIPT_HOST_PROBE_BITBANG_SERVER_H_
#define ICESCRIPT_HOST_PROBE_BITBANG_SERVER_H_

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "entry/icescript.h"
#include "host/probe/pin_port.h"
#include "host/system/listener.h"

namespace icehost {

// What the bytes of one client do to the pins (see BitbangPort for the bytes). Bytes that mean
// nothing, blinking among them, are passed over.
class BitbangSession {
 public:
  // `port` must outlive the session.
  explicit BitbangSession(PinPort& port) : port_(port) {}

  // Appends the answers to `answers`, at most one for each byte. False once the client has quit;
  // the bytes behind that are not looked at.
  bool Feed(std::string_view bytes, std::string& answers);

 private:
  void SetPins(int bits);
  void SetResets(int bits);

  PinPort& port_;
  int levels_ = GPIO_PIN_NRST | GPIO_PIN_TRST;
};

// Serves one client at a time. Another that comes meanwhile finds its connection closed, unless the
// first has been silent for the idle limit: then it takes its place. Clients that vanish without a
// word are found out by TCP's keep-alive.
class BitbangServer {
 public:
  using Say = std::function<void(const std::string& text)>;

  // `listener` and `port` must outlive the server. `say` is told of clients that are sent away.
  BitbangServer(Listener& listener, PinPort& port, std::chrono::milliseconds idle_limit, Say say);

  // Serves until a signal ends it, by Interrupted. Throws IoError where no client can be accepted
  // any more.
  [[noreturn]] void Run();

 private:
  struct Client;

  void Accept();
  void Receive(StreamProtocol::socket socket);
  void Read(const std::shared_ptr<Client>& client);
  void Answer(const std::shared_ptr<Client>& client, std::size_t received);

  Listener& listener_;
  PinPort& port_;
  std::chrono::milliseconds idle_limit_;
  Say say_;
  std::weak_ptr<Client> client_;  // owned by the operation that is under way for it
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_BITBANG_SERVER_H_
