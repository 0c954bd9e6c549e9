#ifndef ICESCRIPT_HOST_PROBE_SERVER_H_
#define ICESCRIPT_HOST_PROBE_SERVER_H_

#include <chrono>
#include <memory>
#include <string>

#include "host/probe/pin_port.h"
#include "host/probe/session.h"
#include "host/system/socket.h"

namespace icehost {

// A server whose clients, one at a time, move the pins of a port. A new client replaces a client
// that has left or was silent for the idle limit. Otherwise the server closes the new connection.
// Before it decides, it plays the bytes that have arrived from the current client, for up to a
// second. TCP keep-alive detects clients that vanish.
class Server {
 public:
  // Receives the clients' actions in order, never during a call of the port. May throw to end Run.
  class Observer {
   public:
    virtual ~Observer() = default;
    // A client was accepted. `peer` is its address, and empty if it has none.
    virtual void OnClient(const std::string& peer) = 0;
    // `count` bytes have arrived from the client, and are played next.
    virtual void OnBytes(std::size_t count) = 0;
    // The bytes were played, but their answers were not sent yet.
    virtual void OnDone() = 0;
    // The bytes are invalid, as `why` explains, so the client will be disconnected.
    virtual void OnFault(const std::string& why) = 0;
    virtual void OnClientLeft() = 0;
    // A second client was refused or replaces a silent one, as `why` explains.
    virtual void OnRefusal(const std::string& why) = 0;
  };

  // All references must outlive the server.
  Server(Listener& listener, PinPort& port, Session& session, std::chrono::milliseconds idle_limit,
         Observer& observer);

  // Serves until a signal arrives, and then plays the bytes that clients have sent. Throws
  // Interrupted if this takes longer than 200 ms, or than AllowAfterSignal allows. Throws IoError
  // if clients can no longer be accepted, or if the port is lost, even while idle.
  void Run();
  // Returns whether some bytes that clients have sent may not have been played. For use after Run
  // has thrown.
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
  bool plays_ = false;  // the session is playing bytes of the client
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_SERVER_H_
