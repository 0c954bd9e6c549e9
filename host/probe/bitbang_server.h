// A remote_bitbang server.
#ifndef ICESCRIPT_HOST_PROBE_BITBANG_SERVER_H_
#define ICESCRIPT_HOST_PROBE_BITBANG_SERVER_H_

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

#include "host/probe/pin_port.h"
#include "host/system/socket.h"
#include "host/target/wires.h"

namespace icehost {

// Plays the bytes of clients on the pins (see BitbangPort for the bytes). Skips bytes that have no
// meaning here, such as blinking. A pin that no byte has set yet is not enabled.
class BitbangSession {
 public:
  // `port` must outlive the session.
  explicit BitbangSession(PinPort& port) : port_(port) {}

  // Appends the answers to `answers`, at most one for each byte. Returns false if the client has
  // quit, and ignores the bytes after that. Collects all samples of the port.
  bool Feed(std::string_view bytes, std::string& answers);

 private:
  void SetPins(int bits);
  void SetResets(int bits);

  PinPort& port_;
  int levels_ = kResetPins;
  int enables_ = 0;
};

// Serves one client at a time. The connection of another that comes meanwhile is closed, unless the
// first has left or has been silent for the idle limit: then the other takes its place. The server
// first plays what has come from the first, for up to a second. TCP's keep-alive discovers clients
// that vanish. Each client finds the pins as the one before left them.
class BitbangServer {
 public:
  // Learns what clients do, in order and never while the port is working. An exception ends Run.
  class Observer {
   public:
    virtual ~Observer() = default;
    // A client is accepted; `peer` is empty if it has no name.
    virtual void OnClient(const std::string& peer) = 0;
    // So many of its bytes have come.
    virtual void OnBytes(std::size_t count) = 0;
    // They were played, but are not answered yet.
    virtual void OnDone() = 0;
    // The client has left.
    virtual void OnClientLeft() = 0;
    // Why a client is sent away.
    virtual void OnRefusal(const std::string& why) = 0;
  };

  // All must outlive the server.
  BitbangServer(Listener& listener, PinPort& port, std::chrono::milliseconds idle_limit,
                Observer& observer);

  // Serves until a signal ends it, and plays what clients have sent by then; throws Interrupted if
  // that takes more than a moment, or more than AllowAfterSignal allows. Throws IoError if no more
  // clients can be accepted, or if the port does; a port that is lost while nobody uses it is
  // noticed within a second.
  void Run();
  // After Run has thrown: whether a client has left without having been played to its end.
  bool OwesAPart() const;

 private:
  struct Client;
  struct Arrival;

  void Accept();
  void Wait();
  bool Work();
  void Admit();
  void Answer();
  void Dismiss();

  Listener& listener_;
  PinPort& port_;
  std::chrono::milliseconds idle_limit_;
  Observer& observer_;
  BitbangSession session_;
  // Shared with operations under way, which may end later than the server.
  std::shared_ptr<Arrival> arrival_;
  std::shared_ptr<Client> client_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_BITBANG_SERVER_H_
