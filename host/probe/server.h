// A server that lets clients move the pins of a port.
#ifndef ICESCRIPT_HOST_PROBE_SERVER_H_
#define ICESCRIPT_HOST_PROBE_SERVER_H_

#include <chrono>
#include <memory>
#include <string>

#include "host/probe/pin_port.h"
#include "host/probe/session.h"
#include "host/system/socket.h"

namespace icehost {

// Serves one client at a time. The connection of another that comes meanwhile is closed, unless the
// first has left or has been silent for the idle limit: then the other takes its place. The server
// first plays what has come from the first, for up to a second. TCP's keep-alive discovers clients
// that vanish. Each client finds the pins as the one before left them.
class Server {
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
    // It is sent away after that, because its bytes are wrong: why.
    virtual void OnFault(const std::string& why) = 0;
    // The client has left.
    virtual void OnClientLeft() = 0;
    // Why a client is sent away.
    virtual void OnRefusal(const std::string& why) = 0;
  };

  // All must outlive the server.
  Server(Listener& listener, PinPort& port, Session& session, std::chrono::milliseconds idle_limit,
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
  Session& session_;  // on the port
  std::chrono::milliseconds idle_limit_;
  Observer& observer_;
  // Shared with operations under way, which may end later than the server.
  std::shared_ptr<Arrival> arrival_;
  std::shared_ptr<Client> client_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_SERVER_H_
