#include "host/pins/tap_decoder.h"

#include <utility>

#include "host/target/wires.h"

namespace icehost {
namespace {

bool IsInDrScan(TapState state) {
  return state >= TapState::kCaptureDr && state <= TapState::kExit2Dr;
}

bool IsInIrScan(TapState state) {
  return state >= TapState::kCaptureIr && state <= TapState::kExit2Ir;
}

}  // namespace

void TapDecoder::Record(const PinStep& step) {
  const bool rising = (~last_.wires & step.wires & GPIO_PIN_TCK) != 0;
  const bool trst = (step.wires & GPIO_PIN_TRST) == 0;
  const bool trst_resets = trst && last_.tap != TapState::kTestLogicReset;
  if (trst_resets) CutScan();
  if (((last_.wires ^ step.wires) & kResetPins) != 0) OnResetPins(step.wires & kResetPins);
  if (trst_resets) Tell(&TapListener::OnTapReset, true, StepRange{step_, step_ + 1});
  if (!trst && rising && step.tap.has_value()) {
    if (last_.tap.has_value()) {
      OnEdge(step);
    } else {
      ResetByTms();
    }
  }
  last_ = step;
  ++step_;
}

void TapDecoder::End() {
  EndScan(false, step_);
  EndIdle(step_);
}

void TapDecoder::OnEdge(const PinStep& step) {
  const TapState from = *last_.tap;
  const TapState to = *step.tap;
  Tell(&TapListener::OnTapEdge, last_, to);
  if (!scan_.has_value() && (IsInDrScan(from) || IsInIrScan(from))) BeginScan(from, true);
  if (from == TapState::kShiftDr || from == TapState::kShiftIr) Shift(step.wires);
  if (from == TapState::kRunTestIdle && to == TapState::kRunTestIdle) ++idle_cycles_;
  if (from == to) return;
  if (from == TapState::kRunTestIdle) EndIdle(step_ + 1);
  switch (to) {
    case TapState::kCaptureDr:
    case TapState::kCaptureIr:
      BeginScan(to, false);
      break;
    case TapState::kUpdateDr:
    case TapState::kUpdateIr:
      EndScan(true, step_ + 1);
      break;
    case TapState::kRunTestIdle:
      idle_begin_ = step_;
      break;
    case TapState::kTestLogicReset:
      ResetByTms();
      break;
    default:
      break;
  }
}

void TapDecoder::BeginScan(TapState state, bool continued) {
  scan_ = {IsInIrScan(state), {}, {}, false, {step_, step_}, 0, false, continued};
}

void TapDecoder::Shift(int wires) {
  if (scan_->in.size() == kMostScanBits) {
    ++scan_->left_out;
    return;
  }
  scan_->in.push_back((wires & GPIO_PIN_TDI) != 0);
  scan_->out.push_back((last_.wires & GPIO_PIN_TDO) != 0);
}

void TapDecoder::OnResetPins(int levels) {
  EndIdle(step_);
  Tell(&TapListener::OnResetPins, levels, StepRange{step_, step_ + 1});
}

void TapDecoder::ResetByTms() {
  CutScan();
  Tell(&TapListener::OnTapReset, false, StepRange{step_, step_ + 1});
}

void TapDecoder::CutScan() {
  if (scan_.has_value()) scan_->reset = true;
  EndScan(false, step_ + 1);
}

void TapDecoder::EndScan(bool updated, std::size_t end) {
  if (!scan_.has_value()) return;
  scan_->updated = updated;
  scan_->steps.end = end;
  ++scans_;
  Tell(&TapListener::OnScan, *std::exchange(scan_, std::nullopt));
}

void TapDecoder::EndIdle(std::size_t end) {
  const long cycles = std::exchange(idle_cycles_, 0);
  if (cycles > 0) Tell(&TapListener::OnIdle, cycles, StepRange{idle_begin_, end});
  idle_begin_ = end;
}

}  // namespace icehost
