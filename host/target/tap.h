// The TAP controller of IEEE 1149.1: its sixteen states and the transitions between them.
#ifndef ICESCRIPT_HOST_TARGET_TAP_H_
#define ICESCRIPT_HOST_TARGET_TAP_H_

#include <optional>

#include "entry/icescript.h"

namespace icehost {

// In the order of the standard's state diagram: each IR state is its DR counterpart + 7.
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

// Returns the name of the state in the standard, such as "Shift-DR".
const char* TapStateName(TapState state);

// After this many rising TCK edges with TMS high, the TAP is in Test-Logic-Reset from any state.
constexpr int kTapResetEdges = 5;

// Returns the state after a rising TCK edge with this level of TMS.
TapState NextTapState(TapState state, bool tms);

// Returns the level of TMS for the first edge of the shortest path between two different states.
bool TmsTowards(TapState from, TapState to);

// Derives the state of a TAP from the levels of the wires.
class TapTracker {
 public:
  // Records the new levels of the wires (GPIO_PIN_ bits). Before the first call, all are high.
  void Update(int wires);

  // Makes the state unknown, as it is at the beginning.
  void Forget();
  // Returns the state; nothing before the first reset (TRST low, or five TCK edges with TMS high).
  std::optional<TapState> State() const { return state_; }
  // Returns the number of rising edges of TCK so far.
  long TckCycles() const { return tck_cycles_; }

 private:
  int wires_ = GPIO_PIN_ALL;
  int tms_high_edges_ = 0;
  long tck_cycles_ = 0;
  std::optional<TapState> state_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TARGET_TAP_H_
