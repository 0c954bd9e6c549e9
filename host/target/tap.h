// The test access port controller of IEEE 1149.1: its sixteen states and the ways between them.
#ifndef ICESCRIPT_HOST_TARGET_TAP_H_
#define ICESCRIPT_HOST_TARGET_TAP_H_

#include <optional>

#include "entry/icescript.h"

namespace icehost {

// In the order of the standard's state diagram, so that the IR column is the DR column plus 7.
enum class TapState {
  kTestLogicReset,
  kRunTestIdle,
  kSelectDrScan,
  kCaptureDr,
  kShiftDr,
  kExit1Dr,
  kPauseDr,
  kExit2Dr,
  kUpdateDr,
  kSelectIrScan,
  kCaptureIr,
  kShiftIr,
  kExit1Ir,
  kPauseIr,
  kExit2Ir,
  kUpdateIr,
};
constexpr int kTapStates = 16;

// Returns the state's name in the standard, such as "Shift-DR".
const char* TapStateName(TapState state);

// TCK edges with TMS high that reach Test-Logic-Reset from any state.
constexpr int kTapResetEdges = 5;

// Returns the state after a rising TCK edge.
TapState NextTapState(TapState state, bool tms);

// Returns the TMS level of the first edge on the shortest way between two different states.
bool TmsTowards(TapState from, TapState to);

// Follows a TAP from outside, by the levels of the wires.
class TapTracker {
 public:
  // The wires (GPIO_PIN_ bits) change to `wires`. They are high before the first call.
  void Update(int wires);

  // Makes the state unknown, as at the beginning.
  void Forget();
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

#endif  // ICESCRIPT_HOST_TARGET_TAP_H_
