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

// Serves one client at a time. If another one connects, its connection is closed, unless the first
// one has left or was silent for the idle limit: then the new client replaces it. The server first
// plays what has arrived from the first client, for up to a second. TCP keep-alive detects clients
// that vanish. Each client finds the pins as the previous one left them.
class Server {
 public:
  // Receives the actions of clients, in order and never while the port works. An exception ends
  // Run.
  class Observer {
   public:
    virtual ~Observer() = default;
    // A client was accepted; `peer` is its address, or empty if it has none.
    virtual void OnClient(const std::string& peer) = 0;
    // This many bytes have arrived from the client.
    virtual void OnBytes(std::size_t count) = 0;
    // The bytes were played, but not answered yet.
    virtual void OnDone() = 0;
    // After this, the client is disconnected because its bytes are wrong; `why` says how.
    virtual void OnFault(const std::string& why) = 0;
    virtual void OnClientLeft() = 0;
    // A second client is rejected, or takes the place of a silent one; `why` says which.
    virtual void OnRefusal(const std::string& why) = 0;
  };

  // All references must outlive the server.
  Server(Listener& listener, PinPort& port, Session& session, std::chrono::milliseconds idle_limit,
         Observer& observer);

  // Serves until a signal arrives, and plays what clients have sent by then. Throws Interrupted if
  // that takes more than a fraction of a second, or more than AllowAfterSignal allows. Throws
  // IoError if no more clients can be accepted, or if the port does. Notices within a second that
  // an unused port is lost.
  void Run();
  // Returns, after Run has thrown, whether the client closed before all its bytes were played.
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
