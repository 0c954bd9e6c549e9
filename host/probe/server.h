// A server whose clients move the pins of a port.
#ifndef ICESCRIPT_HOST_PROBE_SERVER_H_
#define ICESCRIPT_HOST_PROBE_SERVER_H_

#include <chrono>
#include <memory>
#include <string>

#include "host/probe/pin_port.h"
#include "host/probe/session.h"
#include "host/system/socket.h"

namespace icehost {

// Serves one client at a time. A new client replaces a client that has left or was silent for the
// idle limit; otherwise the server closes the new connection. Before it decides, it plays the bytes
// that have arrived from the first client, for up to a second. TCP keep-alive detects clients that
// vanish. Each client finds the pins as the previous one left them.
class Server {
 public:
  // Receives the actions of clients, in order and never while the port works. An exception ends
  // Run.
  class Observer {
   public:
    virtual ~Observer() = default;
    // A client was accepted; `peer` is its address, or empty if it has none.
    virtual void OnClient(const std::string& peer) = 0;
    // `count` bytes have arrived from the client.
    virtual void OnBytes(std::size_t count) = 0;
    // The bytes were played, but not answered yet.
    virtual void OnDone() = 0;
    // The client's bytes are wrong, as `why` explains. The client is then disconnected.
    virtual void OnFault(const std::string& why) = 0;
    virtual void OnClientLeft() = 0;
    // A second client is rejected, or replaces a silent one; `why` says which.
    virtual void OnRefusal(const std::string& why) = 0;
  };

  // All references must outlive the server.
  Server(Listener& listener, PinPort& port, Session& session, std::chrono::milliseconds idle_limit,
         Observer& observer);

  // Serves until a signal arrives, and plays what clients have sent by then. Throws Interrupted if
  // that takes more than a fraction of a second, or more than AllowAfterSignal allows. Throws
  // IoError if no more clients can be accepted, or if the port throws it. Notices within a second
  // that an unused port is lost.
  void Run();
  // For use after Run has thrown. Returns whether the client left before all its bytes were played.
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
  Session& session_;  // plays on the port
  std::chrono::milliseconds idle_limit_;
  Observer& observer_;
  // Shared with pending operations, which may end later than the server.
  std::shared_ptr<Arrival> arrival_;
  std::shared_ptr<Client> client_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_SERVER_H_
