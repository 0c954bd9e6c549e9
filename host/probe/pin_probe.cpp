#include "host/probe/pin_probe.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/system/errors.h"
#include "host/target/pin_names.h"

namespace icehost {
namespace {

constexpr int kIrCaptureBits = 8 * kDrCaptureByte;

constexpr int kNoReset = GPIO_PIN_NRST | GPIO_PIN_TRST;

// IEEE 1149.1: the two bits of a captured IR that come first are 1 and 0. The others are the
// design's own, so that they tell nothing of its length. Empty where this may be one.
std::string WhyNoIr(const Bits& captured) {
  if (captured.size() < 2 || (captured[0] && !captured[1])) return "";
  const auto ones = std::count(captured.begin(), captured.end(), true);
  const char* why = "its length is another, or it is one of several in a chain";
  if (ones == 0) why = "all zeros: TDO is shorted, or the target is held in reset";
  if (ones == static_cast<std::ptrdiff_t>(captured.size())) {
    why = "all ones: nothing is powered, or nothing is connected";
  }
  return fmt::format("no TAP answers as it should: the captured IR does not end in 01 ({})", why);
}

}  // namespace

int PinProbe::Config(int code, int value) {
  switch (code) {
    case LINK_CONFIG_GET_CDI:
      return wire_mode_;
    case LINK_CONFIG_CDI_MODE:
      if (value == CDI_MODE_2WIRE && !two_wire_) {
        throw Unsupported("these pins have no 2-wire interface");
      }
      wire_mode_ = value == CDI_MODE_2WIRE ? CDI_ANSWER_2WIRE : CDI_ANSWER_JTAG5;
      return 0;
    default:
      return -1;
  }
}

int PinProbe::Reset(int kind) {
  if (kind != LINK_RESET_TARGET) return -1;
  walker_.Write(kNoReset & ~GPIO_PIN_NRST, kDrivenPins);
  walker_.Write(kNoReset, kDrivenPins);
  return 0;
}

int PinProbe::Insert(int ir_bits, const std::uint8_t* ir, int dr_bits, const std::uint8_t* dr) {
  ir_ = ScanBits(ir_bits, ir);
  dr_ = ScanBits(dr_bits, dr);
  return 0;
}

int PinProbe::Execute(std::uint8_t* capture) {
  walker_.TakeTap();
  if (!ir_.empty()) walker_.Scan(TapState::kShiftIr, ir_);
  if (!dr_.empty()) walker_.Scan(TapState::kShiftDr, dr_);
  // Both at once, for across a network a wait costs more than a scan.
  const Bits out = port_.CollectTdo();
  const auto dr_out = out.begin() + static_cast<std::ptrdiff_t>(ir_.size());
  const Bits ir_out(out.begin(), dr_out);
  doubt_ = WhyNoIr(ir_out);
  const int extra = wire_mode_ == CDI_ANSWER_2WIRE ? 1 : 0;
  StoreBits(ir_out, kIrCaptureBits, capture);
  StoreBits({dr_out, out.end()}, 8 * JTAG_DR_MAX_BYTES, capture + kDrCaptureByte + extra);
  return 0;
}

int PinProbe::Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) {
  // A script starts from the state that its START line stands for: every pin enabled and low.
  const bool start = (flags & GPIO_FLAG_START) != 0;
  const bool write_out = start || (flags & GPIO_FLAG_WRITE_OUT) != 0;
  const bool write_oe = start || (flags & GPIO_FLAG_WRITE_OE) != 0;
  if (write_out || write_oe) {
    walker_.Write(write_out ? out_value : walker_.Levels(), write_oe ? oe_mask : walker_.Enables());
  }
  if ((flags & GPIO_FLAG_READ_IN) != 0) data = static_cast<std::uint32_t>(port_.Read());
  return 0;
}

// The bits of one register. On a 2-wire interface the first byte is the interface's own: it is not
// shifted through the TAP.
Bits PinProbe::ScanBits(int bits, const std::uint8_t* data) const {
  const int extra = wire_mode_ == CDI_ANSWER_2WIRE ? 8 : 0;
  return BitsOfBytes(data, extra, std::min(bits, 8 * JTAG_DR_MAX_BYTES));
}

}  // namespace icehost
