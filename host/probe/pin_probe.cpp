#include "host/probe/pin_probe.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "host/system/errors.h"
#include "host/target/wires.h"

namespace icehost {
namespace {

constexpr int kIrCaptureBits = 8 * kDrCaptureByte;

// Returns why these bits cannot be a captured IR, or "". IEEE 1149.1 fixes only the first two bits.
std::string WhyNoIr(const Bits& captured) {
  if (captured.size() < 2 || (captured[0] && !captured[1])) return "";
  const auto ones = std::count(captured.begin(), captured.end(), true);
  const char* why = "the IR length is wrong, or the chain has other TAPs";
  if (ones == 0) why = "all zeros: TDO is shorted, or the target is held in reset";
  if (ones == static_cast<std::ptrdiff_t>(captured.size())) {
    why = "all ones: the target is not powered or not connected";
  }
  return fmt::format("the captured IR does not end in 01 ({})", why);
}

}  // namespace

void TapWalker::Write(int levels, int enables) {
  port_.Write(levels, enables);
  levels_ = levels;
  enables_ = enables;
  tap_.Update(WireLevels(levels, enables));
}

// Makes one TCK cycle. Sets TMS and TDI and samples TDO while TCK is low, because the target reads
// TMS and TDI on the rising edge and changes TDO on the falling edge.
void TapWalker::ClockTck(bool tms, bool tdi, bool sample) {
  const int levels = kResetPins | (tms ? GPIO_PIN_TMS : 0) | (tdi ? GPIO_PIN_TDI : 0);
  Write(levels, kDrivenPins);
  if (sample) port_.SampleTdo();
  Write(levels | GPIO_PIN_TCK, kDrivenPins);
}

void TapWalker::TakeTap() {
  Write(kResetPins, kDrivenPins);
  while (!tap_.State().has_value()) ClockTck(true, false, false);
  // Where NRST also resets the TAP, it is in Test-Logic-Reset now. From both states, this cycle
  // leads to Run-Test/Idle.
  const bool unsure = std::exchange(pulsed_nrst_, false);
  if (unsure && tap_.State() == TapState::kRunTestIdle) ClockTck(false, false, false);
  MoveTo(TapState::kRunTestIdle);
}

void TapWalker::PulseNrst() {
  Write(kResetPins & ~GPIO_PIN_NRST, kDrivenPins);
  Write(kResetPins, kDrivenPins);
  pulsed_nrst_ = true;
}

void TapWalker::ResetTap() {
  Write(kResetPins, kDrivenPins);
  for (int i = 0; i < kTapResetEdges; ++i) ClockTck(true, false, false);
  Write(kResetPins | GPIO_PIN_TMS, kDrivenPins);
}

void TapWalker::MoveTo(TapState state) {
  while (tap_.State() != state) ClockTck(TmsTowards(*tap_.State(), state), false, false);
}

void TapWalker::Scan(TapState shift, const Bits& in) {
  MoveTo(shift);
  for (std::size_t i = 0; i < in.size(); ++i) ClockTck(i + 1 == in.size(), in[i], true);
  MoveTo(TapState::kRunTestIdle);
  Write(kResetPins, kDrivenPins);
}

int PinProbe::Config(int code, int value) {
  if (code == LINK_CONFIG_GET_CDI) return wire_mode_;
  if (code != LINK_CONFIG_CDI_MODE) return -1;
  const bool two_wire = value == CDI_MODE_2WIRE;
  if (two_wire && !two_wire_) throw Unsupported("this probe has no 2-wire interface");
  wire_mode_ = two_wire ? CDI_ANSWER_2WIRE : CDI_ANSWER_JTAG5;
  return 0;
}

int PinProbe::Reset(int kind) {
  if (kind != LINK_RESET_TARGET) return -1;
  others_in_bypass_ = false;  // NRST may also reset the TAPs
  walker_.PulseNrst();
  return 0;
}

int PinProbe::Insert(int ir_bits, const std::uint8_t* ir, int dr_bits, const std::uint8_t* dr) {
  // The check before the run misses long registers if an earlier script has selected two wires.
  if (wire_mode_ == CDI_ANSWER_2WIRE && std::max(ir_bits, dr_bits) - 8 > kMostTwoWireBits) {
    throw Unsupported(
        "a register can have at most 256 bits over two wires: the plug-in lost the 33rd byte");
  }
  ir_ = ScanBits(ir_bits, ir);
  dr_ = ScanBits(dr_bits, dr);
  return 0;
}

int PinProbe::Execute(std::uint8_t* capture) {
  RefuseUnfitScan();
  chain_.ir_in = ir_.empty() ? Bits() : place_.Whole(TapColumn::kIr, ir_);
  chain_.dr_in = dr_.empty() ? Bits() : place_.Whole(TapColumn::kDr, dr_);
  walker_.TakeTap();
  if (!ir_.empty()) walker_.Scan(TapState::kShiftIr, chain_.ir_in);
  others_in_bypass_ = others_in_bypass_ || !ir_.empty();
  if (!dr_.empty()) walker_.Scan(TapState::kShiftDr, chain_.dr_in);
  // Collects IR and DR together, because waiting for the network takes longer than a scan.
  const Bits out = port_.CollectTdo();
  chain_.ir_out = Slice(out, 0, chain_.ir_in.size());
  chain_.dr_out = Slice(out, chain_.ir_in.size(), out.size());
  doubt_ = DoubtOf(chain_.ir_out);
  const int extra = wire_mode_ == CDI_ANSWER_2WIRE ? 1 : 0;
  if (!ir_.empty()) StoreBits(place_.Own(TapColumn::kIr, chain_.ir_out), kIrCaptureBits, capture);
  if (!dr_.empty()) {
    StoreBits(place_.Own(TapColumn::kDr, chain_.dr_out), 8 * JTAG_DR_MAX_BYTES,
              capture + kDrCaptureByte + extra);
  }
  return 0;
}

// Throws Unsupported if the scan does not fit the addressed TAP, or would change other TAPs.
void PinProbe::RefuseUnfitScan() const {
  if (place_.ir_lengths.empty()) return;
  const auto length = static_cast<std::size_t>(place_.ir_lengths[place_.tap]);
  if (!ir_.empty() && ir_.size() != length) {
    const bool alone = place_.ir_lengths.size() == 1;
    throw Unsupported(
        fmt::format("the script's IR has {} bits, but the IR of {} has {}", ir_.size(),
                    alone ? "the chain" : fmt::format("TAP {}", place_.tap + 1), length));
  }
  if (place_.ir_lengths.size() == 1) return;
  if (wire_mode_ != CDI_ANSWER_JTAG5)
    throw Unsupported("a chain of TAPs is not possible over two wires");
  if (ir_.empty() && !dr_.empty() && !others_in_bypass_) {
    throw Unsupported("the other TAPs might not be in BYPASS: load an instruction first");
  }
}

const ChainScan* PinProbe::WholeChain() const {
  return place_.ir_lengths.size() > 1 ? &chain_ : nullptr;
}

bool PinProbe::ResetTapBeforeScan() {
  walker_.ForgetTap();
  others_in_bypass_ = false;
  return true;
}

// Returns why the captured IR looks wrong, or an empty text.
std::string PinProbe::DoubtOf(const Bits& captured_ir) const {
  const auto shifted = static_cast<int>(ir_.size());
  const int length = port_.IrLength().value_or(shifted);
  if (shifted != 0 && shifted != length) {
    return fmt::format("the script's IR has {} bits, but the target's has {}", shifted, length);
  }
  if (place_.ir_lengths.size() < 2 || shifted == 0) return WhyNoIr(captured_ir);
  std::size_t at = 0;
  for (std::size_t i = 0; i < place_.ir_lengths.size(); ++i) {
    const std::size_t end = at + static_cast<std::size_t>(place_.ir_lengths[i]);
    const std::string why = WhyNoIr(Slice(captured_ir, at, end));
    if (!why.empty()) return fmt::format("TAP {}: {}", i + 1, why);
    at = end;
  }
  return "";
}

int PinProbe::Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) {
  others_in_bypass_ = false;
  // GPIO_FLAG_START implies a write, which enables all pins and sets them low.
  const bool start = (flags & GPIO_FLAG_START) != 0;
  const bool write_out = start || (flags & GPIO_FLAG_WRITE_OUT) != 0;
  const bool write_oe = start || (flags & GPIO_FLAG_WRITE_OE) != 0;
  if (write_out || write_oe) {
    walker_.Write(write_out ? out_value : walker_.Levels(), write_oe ? oe_mask : walker_.Enables());
  }
  if ((flags & GPIO_FLAG_READ_IN) != 0) data = static_cast<std::uint32_t>(port_.Read());
  return 0;
}

// Returns the bits of a register. Over two wires, skips the first byte, which the interface uses.
Bits PinProbe::ScanBits(int bits, const std::uint8_t* data) const {
  const int extra = wire_mode_ == CDI_ANSWER_2WIRE ? 8 : 0;
  return BitsOfBytes(data, extra, std::min(bits, 8 * JTAG_DR_MAX_BYTES));
}

}  // namespace icehost
