// A remote_bitbang server.
#ifndef ICESCRIPT_HOST_PROBE_BITBANG_SERVER_H_
#define ICESCRIPT_HOST_PROBE_BITBANG_SERVER_H_

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

#include "entry/icescript.h"
#include "host/probe/pin_port.h"
#include "host/system/listener.h"

namespace icehost {

// What the bytes of clients do to the pins (see BitbangPort for the bytes). Bytes that mean
// nothing, blinking among them, are passed over. A pin that no byte has set yet is not enabled.
class BitbangSession {
 public:
  // `port` must outlive the session.
  explicit BitbangSession(PinPort& port) : port_(port) {}

  // Appends the answers to `answers`, at most one for each byte. False once the client has quit;
  // the bytes behind that are not looked at. The port has collected its samples at the end.
  bool Feed(std::string_view bytes, std::string& answers);

 private:
  bool Play(std::string_view bytes);
  void SetPins(int bits);
  void SetResets(int bits);

  PinPort& port_;
  int levels_ = GPIO_PIN_NRST | GPIO_PIN_TRST;
  int enables_ = 0;
};

// Serves one client at a time. Another that comes meanwhile finds its connection closed, unless the
// first has been silent for the idle limit: then it takes its place. Clients that vanish without a
// word are found out by TCP's keep-alive. Each finds the pins as the one before left them.
class BitbangServer {
 public:
  // Told what clients do, in order and never while the port is at work. What it throws ends Run.
  class Observer {
   public:
    virtual ~Observer() = default;
    // A client comes to be served; `peer` is empty where it has no name.
    virtual void OnClient(const std::string& peer) = 0;
    // So many bytes of its have come.
    virtual void OnBytes(std::size_t count) = 0;
    // What they ask for has been done, but they are not answered yet.
    virtual void OnDone() = 0;
    // It is gone.
    virtual void OnClientLeft() = 0;
    // Why a client is sent away.
    virtual void OnRefusal(const std::string& why) = 0;
  };

  // All must outlive the server.
  BitbangServer(Listener& listener, PinPort& port, std::chrono::milliseconds idle_limit,
                Observer& observer);

  // Serves until a signal ends it, by Interrupted. Throws IoError where no client can be accepted
  // any more, and where the port does; one that is lost while nobody uses it is noticed within a
  // second.
  [[noreturn]] void Run();

 private:
  struct Client;
  struct Arrival;

  void Accept();
  bool Work();
  void Admit();
  void Answer();
  void Dismiss();

  Listener& listener_;
  PinPort& port_;
  std::chrono::milliseconds idle_limit_;
  Observer& observer_;
  BitbangSession session_;
  // Shared with the operations that are under way for them, which may end later than the server.
  std::shared_ptr<Arrival> arrival_;
  std::shared_ptr<Client> client_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_BITBANG_SERVER_H_
