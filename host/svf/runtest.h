// RUNTEST: how long the TAP stays in a state.
#ifndef ICESCRIPT_HOST_SVF_RUNTEST_H_
#define ICESCRIPT_HOST_SVF_RUNTEST_H_

#include "host/svf/statements.h"

namespace icehost {

// A script has nothing that waits. What a probe spends anyway from one scan to the next is no loss.
// Cycles in Test-Logic-Reset do nothing.
constexpr double kMostIdleCycles = 16;
constexpr double kMostIdleSeconds = 1e-5;

// Remembers the states of the last statement for the next, and adds up the time between two scans.
class SvfRunTest {
 public:
  enum class Kind { kIdle, kReset, kWrong };

  // kIdle: a moment in Run-Test/Idle. kReset: the same, but of Test-Logic-Reset. What a script
  // cannot do is wrong, and reported.
  Kind Take(const SvfStatement& statement, Problems& problems);
  // STATE names IDLE so many times. False, and reported, where that is too long.
  bool Idle(double cycles, Place place, Problems& problems);
  void BeginScan() { cycles_ = seconds_ = 0; }

 private:
  enum class State { kIdle, kReset };
  State run_ = State::kIdle;
  State end_ = State::kIdle;
  double cycles_ = 0;  // since the last scan
  double seconds_ = 0;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_RUNTEST_H_
