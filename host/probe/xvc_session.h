// The protocol XVC, as a server plays it.
#ifndef ICESCRIPT_HOST_PROBE_XVC_SESSION_H_
#define ICESCRIPT_HOST_PROBE_XVC_SESSION_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "host/probe/pin_port.h"
#include "host/probe/session.h"
#include "host/target/bits.h"

namespace icehost {

// See xvc.h for the commands. Plays a shift after all of it has come, and leaves TCK low. NRST and
// TRST are never enabled. Any period of TCK is accepted, and means nothing on the pins.
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
  std::string unplayed_;  // the beginning of a command
  std::string fault_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_XVC_SESSION_H_
