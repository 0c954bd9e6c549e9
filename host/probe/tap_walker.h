// Walks the TAPs behind pins, by TCK and TMS.
#ifndef ICESCRIPT_HOST_PROBE_TAP_WALKER_H_
#define ICESCRIPT_HOST_PROBE_TAP_WALKER_H_

#include "entry/icescript.h"
#include "host/probe/pin_port.h"
#include "host/target/bits.h"
#include "host/target/tap.h"
#include "host/target/tap_tracker.h"

namespace icehost {

// Throws what the port throws.
class TapWalker {
 public:
  // `port` must outlive the walker.
  explicit TapWalker(PinPort& port) : port_(port) {}

  // The pins by hand; the TAP is followed meanwhile.
  void Write(int levels, int enables);
  // What was written last; nothing is enabled at first.
  int Levels() const { return levels_; }
  int Enables() const { return enables_; }

  // Makes the pins and the TAP the walker's own, wherever they are: to Run-Test/Idle, with TRST and
  // NRST high.
  void TakeTap();
  // To Test-Logic-Reset, from any state and by TMS alone: TRST and NRST stay high.
  void ResetTap();
  // One scan, through Shift-DR or Shift-IR to Run-Test/Idle, with TCK low at its end. The state is
  // known before. What comes out is yet to be collected from the port.
  void Scan(TapState shift, const Bits& in);

  long TckCycles() const { return tap_.TckCycles(); }

 private:
  void ClockTck(bool tms, bool tdi, bool sample);
  void MoveTo(TapState state);

  PinPort& port_;
  int levels_ = GPIO_PIN_ALL;
  int enables_ = 0;
  TapTracker tap_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_TAP_WALKER_H_
