#include "host/target/tap.h"

namespace icehost {
namespace {

using S = TapState;

struct Ways {
  TapState tms_low;
  TapState tms_high;
};

constexpr Ways kWays[kTapStates] = {
    {S::kRunTestIdle, S::kTestLogicReset},  // Test-Logic-Reset
    {S::kRunTestIdle, S::kSelectDrScan},    // Run-Test/Idle
    {S::kCaptureDr, S::kSelectIrScan},      // Select-DR-Scan
    {S::kShiftDr, S::kExit1Dr},             // Capture-DR
    {S::kShiftDr, S::kExit1Dr},             // Shift-DR
    {S::kPauseDr, S::kUpdateDr},            // Exit1-DR
    {S::kPauseDr, S::kExit2Dr},             // Pause-DR
    {S::kShiftDr, S::kUpdateDr},            // Exit2-DR
    {S::kRunTestIdle, S::kSelectDrScan},    // Update-DR
    {S::kCaptureIr, S::kTestLogicReset},    // Select-IR-Scan
    {S::kShiftIr, S::kExit1Ir},             // Capture-IR
    {S::kShiftIr, S::kExit1Ir},             // Shift-IR
    {S::kPauseIr, S::kUpdateIr},            // Exit1-IR
    {S::kPauseIr, S::kExit2Ir},             // Pause-IR
    {S::kShiftIr, S::kUpdateIr},            // Exit2-IR
    {S::kRunTestIdle, S::kSelectDrScan},    // Update-IR
};

constexpr const char* kNames[kTapStates] = {
    "Test-Logic-Reset", "Run-Test/Idle",  "Select-DR-Scan", "Capture-DR",
    "Shift-DR",         "Exit1-DR",       "Pause-DR",       "Exit2-DR",
    "Update-DR",        "Select-IR-Scan", "Capture-IR",     "Shift-IR",
    "Exit1-IR",         "Pause-IR",       "Exit2-IR",       "Update-IR",
};

// Number of edges of the shortest way: each round adds the states that are one edge further.
int Distance(TapState from, TapState to) {
  const auto bit = [](TapState state) { return 1U << static_cast<unsigned>(state); };
  unsigned reached = bit(from);
  int edges = 0;
  for (; (reached & bit(to)) == 0; ++edges) {
    const unsigned before = reached;
    for (unsigned state = 0; state < kTapStates; ++state) {
      if ((before >> state & 1U) != 0) {
        reached |= bit(kWays[state].tms_low) | bit(kWays[state].tms_high);
      }
    }
  }
  return edges;
}

}  // namespace

const char* TapStateName(TapState state) {
  return kNames[static_cast<int>(state)];
}

TapState NextTapState(TapState state, bool tms) {
  const Ways& ways = kWays[static_cast<int>(state)];
  return tms ? ways.tms_high : ways.tms_low;
}

bool TmsTowards(TapState from, TapState to) {
  return Distance(NextTapState(from, true), to) < Distance(NextTapState(from, false), to);
}

}  // namespace icehost
