#include "host/pins/tap_decoder.h"

#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "host/target/wires.h"

namespace icehost {

std::string BitText(const Bits& bits) {
  std::vector<std::uint8_t> bytes((bits.size() + 7) / 8);
  StoreBits(bits, std::numeric_limits<int>::max(), bytes.data());
  return ByteText(bytes.data(), bytes.size());
}

void TapDecoder::Record(const PinStep& step) {
  const bool rising = (~wires_ & step.wires & GPIO_PIN_TCK) != 0;
  const std::optional<TapState> from = std::exchange(tap_, step.tap);
  const bool trst = (step.wires & GPIO_PIN_TRST) == 0;
  const bool trst_resets = trst && from != TapState::kTestLogicReset;
  if (trst_resets) CutScan();
  if (((wires_ ^ step.wires) & kResetPins) != 0) OnResetPins(step.wires & kResetPins);
  if (trst_resets) Tell(&TapListener::OnTapReset, true, StepRange{step_, step_ + 1});
  if (!trst && rising && step.tap.has_value()) {
    if (from.has_value()) {
      OnEdge(*from, *step.tap, step.wires);
    } else {
      ResetByTms();
    }
  }
  wires_ = step.wires;
  ++step_;
}

void TapDecoder::End() {
  EndScan(false, step_);
  EndIdle(step_);
}

void TapDecoder::OnEdge(TapState from, TapState to, int wires) {
  if (from == TapState::kShiftDr || from == TapState::kShiftIr) Shift(wires);
  if (from == TapState::kRunTestIdle && to == TapState::kRunTestIdle) ++idle_cycles_;
  if (from == to) return;
  if (from == TapState::kRunTestIdle) EndIdle(step_ + 1);
  switch (to) {
    case TapState::kCaptureDr:
    case TapState::kCaptureIr:
      scan_ = {to == TapState::kCaptureIr, {}, {}, false, {step_, step_}, 0};
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

void TapDecoder::Shift(int wires) {
  if (scan_->in.size() == kMostScanBits) {
    ++scan_->left_out;
    return;
  }
  scan_->in.push_back((wires & GPIO_PIN_TDI) != 0);
  scan_->out.push_back((wires_ & GPIO_PIN_TDO) != 0);
}

// What came before has ended before.
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
