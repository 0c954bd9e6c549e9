// Follows a TAP from outside, by the pins alone.
#ifndef ICESCRIPT_HOST_TARGET_TAP_TRACKER_H_
#define ICESCRIPT_HOST_TARGET_TAP_TRACKER_H_

#include <optional>

#include "entry/icescript.h"
#include "host/target/tap.h"

namespace icehost {

// The levels of the wires when the probe puts out `levels` on the pins in `enables`: the others
// float high.
constexpr int WireLevels(int levels, int enables) {
  return (levels | ~enables) & GPIO_PIN_ALL;
}

class TapTracker {
 public:
  // The wires (GPIO_PIN_ bits) change to `wires`. They are high before the first call.
  void Update(int wires);

  // Unknown until TRST has been low or TMS high for five rising edges of TCK.
  std::optional<TapState> State() const { return state_; }
  // Rising edges of TCK so far.
  long TckCycles() const { return tck_cycles_; }

 private:
  int wires_ = GPIO_PIN_ALL;
  int tms_high_edges_ = 0;
  long tck_cycles_ = 0;
  std::optional<TapState> state_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TARGET_TAP_TRACKER_H_
