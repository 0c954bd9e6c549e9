#include "host/target/tap.h"

#include <array>
#include <queue>

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

// Number of edges of the shortest way.
int Distance(TapState from, TapState to) {
  std::array<int, kTapStates> distance{};
  distance.fill(-1);
  distance[static_cast<std::size_t>(from)] = 0;
  std::queue<TapState> open({from});
  while (open.front() != to) {
    const TapState state = open.front();
    open.pop();
    for (const bool tms : {false, true}) {
      const TapState next = NextTapState(state, tms);
      int& next_distance = distance[static_cast<std::size_t>(next)];
      if (next_distance != -1) continue;
      next_distance = distance[static_cast<std::size_t>(state)] + 1;
      open.push(next);
    }
  }
  return distance[static_cast<std::size_t>(to)];
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
