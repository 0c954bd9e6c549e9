#include "host/target/target.h"

#include <algorithm>

namespace icehost {

Target::Target(const TargetOptions& options)
    : options_(options), instruction_(options.idcode_instruction) {
  if (options_.idcode_instruction != kScratchInstruction) {
    options_.registers.emplace(kScratchInstruction, BitsOfNumber(0, 32));
  }
  registers_ = options_.registers;
}

void Target::RaiseTck(bool tms, bool tdi) {
  switch (state_) {
    case TapState::kCaptureDr:
      shift_ = CapturedDr();
      break;
    case TapState::kCaptureIr:
      shift_ = BitsOfNumber(0x01, options_.ir_length);  // the standard's 01 in the two lowest bits
      break;
    case TapState::kShiftDr:
    case TapState::kShiftIr:
      Shift(tdi);
      break;
    default:
      break;
  }
  state_ = NextTapState(state_, tms);
}

void Target::LowerTck() {
  if (state_ == TapState::kUpdateDr) UpdateDr();
  if (state_ == TapState::kUpdateIr) instruction_ = NumberOfBits(shift_);
  if (state_ == TapState::kTestLogicReset) instruction_ = options_.idcode_instruction;
  const bool shifting = state_ == TapState::kShiftDr || state_ == TapState::kShiftIr;
  tdo_ = shifting ? std::optional<bool>(shift_.front()) : std::nullopt;
}

void Target::ResetTap() {
  state_ = TapState::kTestLogicReset;
  instruction_ = options_.idcode_instruction;
  tdo_.reset();
}

void Target::HoldRegisters(bool hold) {
  if (hold && !held_) registers_ = options_.registers;
  held_ = hold;
}

void Target::Shift(bool tdi) {
  std::rotate(shift_.begin(), shift_.begin() + 1, shift_.end());
  shift_.back() = tdi;
}

Bits Target::CapturedDr() const {
  if (const auto found = registers_.find(instruction_); found != registers_.end()) {
    return found->second;
  }
  if (instruction_ == options_.idcode_instruction) return BitsOfNumber(options_.idcode, 32);
  return BitsOfNumber(0, 1);  // BYPASS
}

void Target::UpdateDr() {
  if (held_) return;
  if (const auto found = registers_.find(instruction_); found != registers_.end()) {
    found->second = shift_;
  }
}

}  // namespace icehost
