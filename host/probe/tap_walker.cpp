#include "host/probe/tap_walker.h"

#include "host/target/pin_names.h"

namespace icehost {
namespace {

constexpr int kNoReset = GPIO_PIN_NRST | GPIO_PIN_TRST;

}  // namespace

void TapWalker::Write(int levels, int enables) {
  port_.Write(levels, enables);
  levels_ = levels;
  enables_ = enables;
  tap_.Update(WireLevels(levels, enables));
}

// One TCK cycle. TMS and TDI are set up, and TDO is sampled, while TCK is low: the target takes
// them on the rising edge and changes TDO on the falling one.
void TapWalker::ClockTck(bool tms, bool tdi, bool sample) {
  const int levels = kNoReset | (tms ? GPIO_PIN_TMS : 0) | (tdi ? GPIO_PIN_TDI : 0);
  Write(levels, kDrivenPins);
  if (sample) port_.SampleTdo();
  Write(levels | GPIO_PIN_TCK, kDrivenPins);
}

void TapWalker::TakeTap() {
  Write(kNoReset, kDrivenPins);
  while (!tap_.State().has_value()) ClockTck(true, false, false);
  MoveTo(TapState::kRunTestIdle);
}

void TapWalker::ResetTap() {
  Write(kNoReset, kDrivenPins);
  for (int i = 0; i < kTapResetEdges; ++i) ClockTck(true, false, false);
  Write(kNoReset | GPIO_PIN_TMS, kDrivenPins);
}

void TapWalker::MoveTo(TapState state) {
  while (tap_.State() != state) ClockTck(TmsTowards(*tap_.State(), state), false, false);
}

void TapWalker::Scan(TapState shift, const Bits& in) {
  MoveTo(shift);
  for (std::size_t i = 0; i < in.size(); ++i) ClockTck(i + 1 == in.size(), in[i], true);
  MoveTo(TapState::kRunTestIdle);
  Write(kNoReset, kDrivenPins);
}

}  // namespace icehost
