#include "host/record/observed_probe.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "entry/icescript.h"
#include "host/record/svg_writer.h"
#include "host/system/errors.h"
#include "host/system/interrupt.h"

namespace icehost {
namespace {

// The bytes of a register, most significant first; no byte beyond the array.
std::string ByteText(const std::uint8_t* bytes, int bits) {
  const int count = std::clamp((bits + 7) / 8, 0, static_cast<int>(JTAG_DR_MAX_BYTES));
  const auto last_first = std::make_reverse_iterator(bytes + count);
  return fmt::format("0x{:02x}", fmt::join(last_first, std::make_reverse_iterator(bytes), ""));
}

Field Bytes(const char* name, const std::uint8_t* bytes, int bits) {
  return {name, Field::Kind::kBytes, 0, ByteText(bytes, bits)};
}

const char* GpioName(int flags) {
  if ((flags & GPIO_FLAG_START) != 0) return "START";
  return (flags & GPIO_FLAG_END) != 0 ? "END" : kPinOperation;
}

}  // namespace

ObservedProbe::ObservedProbe(Probe& probe, std::vector<EventListener*> listeners, Refused refused,
                             Begin begin)
    : probe_(probe),
      listeners_(std::move(listeners)),
      refused_(std::move(refused)),
      begin_(std::move(begin)) {}

template <class Call>
int ObservedProbe::Guard(Call call) {
  ThrowIfInterrupted();
  try {
    return call();
  } catch (const Unsupported& error) {
    refused_(error.what());
    return -1;
  }
}

template <class MakeEvent>
void ObservedProbe::Tell(MakeEvent make_event) const {
  if (listeners_.empty()) return;
  const CallEvent event = make_event();
  for (EventListener* const listener : listeners_) listener->OnCall(event);
}

int ObservedProbe::Config(int code, int value) {
  const bool query = code == LINK_CONFIG_GET_CDI;
  if (!query) ++counts_.operations;
  begin_(nullptr);
  const int result = Guard([&] { return probe_.Config(code, value); });
  if (query) wire_mode_ = result;
  Tell([&]() -> CallEvent {
    const auto kind = query ? Field::Kind::kNumber : Field::Kind::kMode;
    return {"link_config",
            {{"code", Field::Kind::kCode, code, ""}, {"value", kind, value, ""}},
            result,
            {}};
  });
  return result;
}

int ObservedProbe::Reset(int kind) {
  ++counts_.operations;
  begin_("reset");
  const int result = Guard([&] { return probe_.Reset(kind); });
  Tell([&]() -> CallEvent {
    return {"link_reset", {{"kind", Field::Kind::kReset, kind, ""}}, result, {}};
  });
  return result;
}

int ObservedProbe::Insert(int ir_bits, const std::uint8_t* ir, int dr_bits,
                          const std::uint8_t* dr) {
  ++counts_.operations;
  ++counts_.reads;
  const int extra = wire_mode_ == CDI_ANSWER_2WIRE ? 8 : 0;  // not shifted through the TAP
  counts_.bits += std::max(ir_bits - extra, 0) + std::max(dr_bits - extra, 0);
  ir_bits_ = ir_bits;
  dr_bits_ = dr_bits;
  scan_name_ = fmt::format("IR {} bits {}, DR {} bits {}", ir_bits, ByteText(ir, ir_bits), dr_bits,
                           ByteText(dr, dr_bits));
  begin_(nullptr);
  const int result = Guard([&] { return probe_.Insert(ir_bits, ir, dr_bits, dr); });
  Tell([&]() -> CallEvent {
    return {"link_jtag_insert",
            {{"ir_bits", Field::Kind::kNumber, ir_bits, ""},
             Bytes("ir", ir, ir_bits),
             {"dr_bits", Field::Kind::kNumber, dr_bits, ""},
             Bytes("dr", dr, dr_bits)},
            result,
            {}};
  });
  return result;
}

int ObservedProbe::Execute(std::uint8_t* capture) {
  begin_(scan_name_.c_str());
  const int result = Guard([&] { return probe_.Execute(capture); });
  Tell([&]() -> CallEvent {
    const int extra = wire_mode_ == CDI_ANSWER_2WIRE ? 1 : 0;
    const int ir_bits = ir_bits_ - 8 * extra;
    std::vector<Field> outputs;
    if (result == 0 && probe_.CapturesIr() && ir_bits <= 8 * kDrCaptureByte) {
      outputs.push_back(Bytes("ir_out", capture, ir_bits));
    }
    if (result == 0) {
      outputs.push_back(Bytes("dr_out", capture + kDrCaptureByte + extra, dr_bits_ - 8 * extra));
    }
    return {"link_jtag_execute", {}, result, std::move(outputs)};
  });
  return result;
}

int ObservedProbe::Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) {
  ++counts_.operations;
  const bool read = (flags & GPIO_FLAG_READ_IN) != 0;
  if (read) ++counts_.reads;
  begin_(GpioName(flags));
  const int result = Guard([&] { return probe_.Gpio(out_value, data, oe_mask, flags); });
  Tell([&]() -> CallEvent {
    CallEvent event = {"link_gpio_operator",
                       {{"out_value", Field::Kind::kPins, out_value, ""},
                        {"oe_mask", Field::Kind::kPins, oe_mask, ""},
                        {"flags", Field::Kind::kFlags, flags, ""}},
                       result,
                       {}};
    if (read) event.outputs.push_back({"data", Field::Kind::kPins, static_cast<int>(data), ""});
    return event;
  });
  return result;
}

}  // namespace icehost
