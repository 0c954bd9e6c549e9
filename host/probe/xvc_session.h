#ifndef ICESCRIPT_HOST_PROBE_XVC_SESSION_H_
#define ICESCRIPT_HOST_PROBE_XVC_SESSION_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "host/probe/pin_port.h"
#include "host/probe/session.h"
#include "host/target/bits.h"

namespace icehost {

// The server side of the XVC protocol: plays the commands in xvc.h. Plays a shift when it has
// arrived completely, and leaves TCK low. Never enables NRST or TRST. Ignores the period of TCK.
class XvcSession : public Session {
 public:
  // `port` must outlive the session.
  explicit XvcSession(PinPort& port) : port_(port) {}

  void Begin() override;
  bool Feed(std::string_view bytes, std::string& answers) override;
  std::string Fault() const override { return fault_; }

 private:
  struct Command;

  std::size_t Play(std::string_view bytes, std::string& answers);
  std::size_t GetInfo(std::string_view bytes, std::string& answers);
  std::size_t SetTck(std::string_view bytes, std::string& answers);
  std::size_t Shift(std::string_view bytes, std::string& answers);
  void Clock(const Bits& tms, const Bits& tdi);

  PinPort& port_;
  std::string unplayed_;  // the beginning of an incomplete command
  std::string fault_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_XVC_SESSION_H_
