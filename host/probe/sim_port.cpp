#include "host/probe/sim_port.h"

#include <algorithm>

#include "host/target/wires.h"

namespace icehost {

Target::Target(const TargetOptions& options)
    : options_(options), instruction_(options.idcode_instruction) {
  if (options_.idcode_instruction != kScratchInstruction) {
    options_.registers.emplace(kScratchInstruction, BitsOfNumber(0, 32));
  }
  registers_ = options_.registers;
}

void Target::RaiseTck(bool tms, bool tdi) {
  if (state_ == TapState::kCaptureDr) Capture(CapturedDr());
  // The two lowest bits are the standard's 01.
  if (state_ == TapState::kCaptureIr) Capture(BitsOfNumber(0x01, options_.ir_length));
  if (IsShifting()) {
    shift_[first_] = tdi;
    first_ = (first_ + 1) % shift_.size();
  }
  state_ = NextTapState(state_, tms);
}

void Target::LowerTck() {
  if (state_ == TapState::kUpdateDr) UpdateDr();
  if (state_ == TapState::kUpdateIr) instruction_ = NumberOfBits(Shifted());
  if (state_ == TapState::kTestLogicReset) instruction_ = options_.idcode_instruction;
  tdo_ = IsShifting() ? std::optional<bool>(shift_[first_]) : std::nullopt;
}

void Target::Capture(Bits bits) {
  shift_ = std::move(bits);
  first_ = 0;
}

Bits Target::Shifted() const {
  Bits bits = shift_;
  std::rotate(bits.begin(), bits.begin() + static_cast<std::ptrdiff_t>(first_), bits.end());
  return bits;
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
    found->second = Shifted();
  }
}

void SimPort::Write(int levels, int enables) {
  const int before = wires_;
  enables_ = enables & GPIO_PIN_ALL;
  wires_ = WireLevels(levels & enables_, enables_);
  const auto high = [this](int pin) { return (wires_ & pin) != 0; };

  target_.HoldRegisters(!high(GPIO_PIN_NRST));
  if (!high(GPIO_PIN_TRST)) {
    target_.ResetTap();
  } else if ((~before & wires_ & GPIO_PIN_TCK) != 0) {
    target_.RaiseTck(high(GPIO_PIN_TMS), high(GPIO_PIN_TDI));
  } else if ((before & ~wires_ & GPIO_PIN_TCK) != 0) {
    target_.LowerTck();
  }
}

int SimPort::Read() {
  // A probe that drives TDO itself reads what it drives.
  const bool target_low = !target_.Tdo().value_or(true) && (enables_ & GPIO_PIN_TDO) == 0;
  return target_low ? wires_ & ~GPIO_PIN_TDO : wires_;
}

}  // namespace icehost
