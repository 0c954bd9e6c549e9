// A remote_bitbang server.
#ifndef ICESCRIPT_HOST_PROBE_BITBANG_SERVER_H_
#define ICESCRIPT_HOST_PROBE_BITBANG_SERVER_H_

#include <string>
#include <string_view>

#include "entry/icescript.h"
#include "host/probe/pin_port.h"
#include "host/system/socket.h"

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

// Serves one client after the other until a signal ends it, by Interrupted. Throws IoError where no
// client can be accepted any more.
[[noreturn]] void Serve(Listener& listener, PinPort& port);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_BITBANG_SERVER_H_
