// Pins with a chain of TAPs behind them, sound or not.
#ifndef ICESCRIPT_TESTS_CHAIN_PORT_H_
#define ICESCRIPT_TESTS_CHAIN_PORT_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "host/probe/pin_port.h"
#include "host/target/tap.h"
#include "host/target/wires.h"

struct TapKind {
  int ir_bits;
  std::optional<std::uint32_t> idcode;
  std::uint64_t captured_ir = 1;
  std::size_t bypass_bits = 1;  // one, unless it is broken
};

// A TAP of IEEE 1149.1 that knows IDCODE (instruction 1, if it has one) and BYPASS, left in
// Shift-DR by whoever used it before.
class ChainedTap {
 public:
  explicit ChainedTap(const TapKind& kind) : kind_(kind) {}

  icehost::TapState State() const { return state_; }
  bool Tdo() const { return tdo_; }

  void RaiseTck(bool tms, bool tdi) {
    using icehost::TapState;
    if (state_ == TapState::kCaptureIr)
      shift_ = icehost::BitsOfNumber(kind_.captured_ir, kind_.ir_bits);
    if (state_ == TapState::kCaptureDr) {
      shift_ = instruction_ == 1 && kind_.idcode.has_value()
                   ? icehost::BitsOfNumber(*kind_.idcode, 32)
                   : icehost::Bits(kind_.bypass_bits);
    }
    if (state_ == TapState::kShiftDr || state_ == TapState::kShiftIr) {
      shift_.push_back(tdi);
      shift_.erase(shift_.begin());
    }
    state_ = icehost::NextTapState(state_, tms);
  }

  // Instructions other than BYPASS, at an Update-IR.
  int LowerTck() {
    using icehost::TapState;
    const bool updates = state_ == TapState::kUpdateIr && was_ != state_;
    was_ = state_;
    if (updates) instruction_ = icehost::NumberOfBits(shift_);
    if (state_ == TapState::kTestLogicReset) instruction_ = 1;
    tdo_ = state_ == TapState::kShiftDr || state_ == TapState::kShiftIr ? shift_.front() : true;
    return updates && shift_ != icehost::Bits(shift_.size(), true) ? 1 : 0;
  }

 private:
  TapKind kind_;
  icehost::TapState state_ = icehost::TapState::kShiftDr;
  icehost::TapState was_ = state_;  // at the last falling edge
  std::uint64_t instruction_ = 0;
  icehost::Bits shift_ = {false};
  bool tdo_ = true;
};

class ChainPort : public icehost::PinPort {
 public:
  // What is read in place of the level on TDO, sample by sample.
  using Fault = std::function<bool(bool tdo, int sample)>;

  // The first TAP is the nearest to TDO. Where `tdi` has a level, TDI is stuck there.
  explicit ChainPort(const std::vector<TapKind>& taps, Fault fault = nullptr,
                     std::optional<bool> tdi = std::nullopt)
      : taps_(taps.begin(), taps.end()), fault_(std::move(fault)), tdi_(tdi) {}

  void Write(int levels, int enables) override {
    const int wires = levels | ~enables;
    constexpr int kNoReset = GPIO_PIN_NRST | GPIO_PIN_TRST;
    if ((wires & kNoReset) != kNoReset) ++resets;
    const int changed = wires_ ^ wires;
    wires_ = wires;
    if ((changed & GPIO_PIN_TCK) == 0) return;
    if ((wires & GPIO_PIN_TCK) != 0) {
      Raise((wires & GPIO_PIN_TMS) != 0, tdi_.value_or((wires & GPIO_PIN_TDI) != 0));
    } else {
      for (ChainedTap& tap : taps_) instructions += tap.LowerTck();
    }
  }
  int Read() override {
    bool tdo = taps_.empty() ? (wires_ & GPIO_PIN_TDI) != 0 : taps_.front().Tdo();
    if (fault_) tdo = fault_(tdo, samples_read_++);
    return (wires_ & icehost::kDrivenPins) | (tdo ? GPIO_PIN_TDO : 0);
  }
  void SampleTdo() override { samples_.push_back((Read() & GPIO_PIN_TDO) != 0); }
  icehost::Bits CollectTdo() override { return std::exchange(samples_, {}); }

  const std::vector<ChainedTap>& Taps() const { return taps_; }
  int resets = 0;        // writes with NRST or TRST low
  int instructions = 0;  // that were loaded and are not BYPASS

 private:
  void Raise(bool tms, bool tdi) {
    // Each takes what the one before it had put out.
    for (std::size_t i = 0; i < taps_.size(); ++i) {
      taps_[i].RaiseTck(tms, i + 1 < taps_.size() ? taps_[i + 1].Tdo() : tdi);
    }
  }

  std::vector<ChainedTap> taps_;
  Fault fault_;
  std::optional<bool> tdi_;
  int wires_ = GPIO_PIN_ALL;
  icehost::Bits samples_;
  int samples_read_ = 0;
};

#endif  // ICESCRIPT_TESTS_CHAIN_PORT_H_
