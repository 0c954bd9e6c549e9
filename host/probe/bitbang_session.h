#ifndef ICESCRIPT_HOST_PROBE_BITBANG_SESSION_H_
#define ICESCRIPT_HOST_PROBE_BITBANG_SESSION_H_

#include <string>
#include <string_view>

#include "host/probe/pin_port.h"
#include "host/probe/session.h"
#include "host/target/wires.h"

namespace icehost {

// The server side of the remote_bitbang protocol: plays the bytes that BitbangPort describes. Skips
// other bytes, such as those for an LED. A pin is not enabled until a byte has set its level.
class BitbangSession : public Session {
 public:
  // `port` must outlive the session.
  explicit BitbangSession(PinPort& port) : port_(port) {}

  // Appends at most one answer for each byte.
  bool Feed(std::string_view bytes, std::string& answers) override;

 private:
  void SetPins(int bits);
  void SetResets(int bits);

  PinPort& port_;
  int levels_ = kResetPins;
  int enables_ = 0;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_BITBANG_SESSION_H_
