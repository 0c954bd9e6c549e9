#include "host/target/tap_tracker.h"

namespace icehost {

void TapTracker::Update(int wires) {
  const bool rising = (~wires_ & wires & GPIO_PIN_TCK) != 0;
  const bool tms = (wires & GPIO_PIN_TMS) != 0;
  wires_ = wires;
  if (rising) ++tck_cycles_;
  if ((wires & GPIO_PIN_TRST) == 0) {
    state_ = TapState::kTestLogicReset;
  } else if (rising) {
    tms_high_edges_ = tms ? tms_high_edges_ + 1 : 0;
    if (state_.has_value()) {
      state_ = NextTapState(*state_, tms);
    } else if (tms_high_edges_ >= kTapResetEdges) {
      state_ = TapState::kTestLogicReset;
    }
  }
}

}  // namespace icehost
