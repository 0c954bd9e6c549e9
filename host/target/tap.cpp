#include "host/target/tap.h"

namespace icehost {
namespace {

using S = TapState;

constexpr struct {
  const char* name;
  TapState tms_low;  // the next state if TMS is low at a rising edge of TCK
  TapState tms_high;
} kStates[kTapStates] = {
    {"Test-Logic-Reset", S::kRunTestIdle, S::kTestLogicReset},
    {"Run-Test/Idle", S::kRunTestIdle, S::kSelectDrScan},
    {"Select-DR-Scan", S::kCaptureDr, S::kSelectIrScan},
    {"Capture-DR", S::kShiftDr, S::kExit1Dr},
    {"Shift-DR", S::kShiftDr, S::kExit1Dr},
    {"Exit1-DR", S::kPauseDr, S::kUpdateDr},
    {"Pause-DR", S::kPauseDr, S::kExit2Dr},
    {"Exit2-DR", S::kShiftDr, S::kUpdateDr},
    {"Update-DR", S::kRunTestIdle, S::kSelectDrScan},
    {"Select-IR-Scan", S::kCaptureIr, S::kTestLogicReset},
    {"Capture-IR", S::kShiftIr, S::kExit1Ir},
    {"Shift-IR", S::kShiftIr, S::kExit1Ir},
    {"Exit1-IR", S::kPauseIr, S::kUpdateIr},
    {"Pause-IR", S::kPauseIr, S::kExit2Ir},
    {"Exit2-IR", S::kShiftIr, S::kUpdateIr},
    {"Update-IR", S::kRunTestIdle, S::kSelectDrScan},
};

constexpr unsigned BitOf(TapState state) {
  return 1U << static_cast<unsigned>(state);
}

// Returns the states that the TAP can reach from `states` with one TCK edge, one bit per state.
unsigned StatesAfter(unsigned states) {
  unsigned after = 0;
  for (int i = 0; i < kTapStates; ++i) {
    if ((states >> i & 1) != 0) after |= BitOf(kStates[i].tms_low) | BitOf(kStates[i].tms_high);
  }
  return after;
}

}  // namespace

const char* TapStateName(TapState state) {
  return kStates[static_cast<int>(state)].name;
}

TapState NextTapState(TapState state, bool tms) {
  const auto& ways = kStates[static_cast<int>(state)];
  return tms ? ways.tms_high : ways.tms_low;
}

bool TmsTowards(TapState from, TapState to) {
  unsigned low = BitOf(NextTapState(from, false));
  unsigned high = BitOf(NextTapState(from, true));
  for (; (low & BitOf(to)) == 0; low = StatesAfter(low), high = StatesAfter(high)) {
    if ((high & BitOf(to)) != 0) return true;
  }
  return false;
}

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

void TapTracker::Forget() {
  tms_high_edges_ = 0;
  state_.reset();
}

}  // namespace icehost
