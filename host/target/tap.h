// The test access port controller of IEEE 1149.1: its sixteen states and the ways between them.
#ifndef ICESCRIPT_HOST_TARGET_TAP_H_
#define ICESCRIPT_HOST_TARGET_TAP_H_

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

// The state's name in the standard, such as "Shift-DR".
const char* TapStateName(TapState state);

// TCK edges with TMS high that reach Test-Logic-Reset from any state.
constexpr int kTapResetEdges = 5;

// The state after a rising TCK edge.
TapState NextTapState(TapState state, bool tms);

// The TMS level of the first edge on the shortest way between two different states.
bool TmsTowards(TapState from, TapState to);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TARGET_TAP_H_
