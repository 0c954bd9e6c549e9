#include "host/probe/sim_port.h"

#include <algorithm>

#include "host/target/wires.h"

namespace icehost {
namespace {

// TAPs that scripts do not address have this IDCODE, with the TAP's index added to the part number.
constexpr std::uint32_t kNeighbourIdcode = 0x1CEC1001;

}  // namespace

Target::Target(const TargetOptions& options)
    : options_(options), instruction_(options.idcode_instruction) {
  if (options_.has_scratch && options_.idcode_instruction != kScratchInstruction) {
    options_.registers.emplace(kScratchInstruction, BitsOfNumber(0, 32));
  }
  registers_ = options_.registers;
}

void Target::RaiseTck(bool tms, bool tdi) {
  if (state_ == TapState::kCaptureDr) Capture(CapturedDr());
  // In IEEE 1149.1, the lowest bits of a captured IR are 01.
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

SimPort::SimPort(const TargetOptions& options, const ChainPlace& place)
    : tap_(place.ir_lengths.empty() ? 0 : place.tap) {
  const std::size_t taps = std::max<std::size_t>(place.ir_lengths.size(), 1);
  for (std::size_t i = 0; i < taps; ++i) {
    if (i == tap_) {
      taps_.emplace_back(options);
      continue;
    }
    TargetOptions other;
    other.ir_length = place.ir_lengths[i];
    other.idcode = kNeighbourIdcode + (static_cast<std::uint32_t>(i) << 12U);
    other.has_scratch = false;
    taps_.emplace_back(other);
  }
}

// All TAPs sample TDI at the same time, so each TAP sees the levels before the edge.
void SimPort::RaiseTck(bool tms, bool tdi) {
  for (std::size_t i = 0; i < taps_.size(); ++i) {
    const bool last = i + 1 == taps_.size();
    taps_[i].RaiseTck(tms, last ? tdi : taps_[i + 1].Tdo().value_or(true));
  }
}

void SimPort::Write(int levels, int enables) {
  const int before = wires_;
  enables_ = enables & GPIO_PIN_ALL;
  wires_ = WireLevels(levels & enables_, enables_);
  const auto high = [this](int pin) { return (wires_ & pin) != 0; };

  for (Target& tap : taps_) tap.HoldRegisters(!high(GPIO_PIN_NRST));
  if (!high(GPIO_PIN_TRST)) {
    for (Target& tap : taps_) tap.ResetTap();
  } else if ((~before & wires_ & GPIO_PIN_TCK) != 0) {
    RaiseTck(high(GPIO_PIN_TMS), high(GPIO_PIN_TDI));
  } else if ((before & ~wires_ & GPIO_PIN_TCK) != 0) {
    for (Target& tap : taps_) tap.LowerTck();
  }
}

int SimPort::Read() {
  // If the probe drives TDO, it reads its own level.
  const bool target_low = !taps_[0].Tdo().value_or(true) && (enables_ & GPIO_PIN_TDO) == 0;
  return target_low ? wires_ & ~GPIO_PIN_TDO : wires_;
}

}  // namespace icehost
