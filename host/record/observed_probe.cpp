#include "host/record/observed_probe.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "entry/icescript.h"
#include "host/record/svg_writer.h"
#include "host/system/errors.h"
#include "host/system/interrupt.h"
#include "host/target/pin_names.h"

namespace icehost {
namespace {

constexpr const char* kFlagNames[] = {"WRITE_OUT", "READ_IN", "WRITE_OE", "START", "END"};

// "A|B" for the bits that have a name, the rest in hexadecimal; "0" for none.
template <std::size_t n>
std::string BitNames(int value, const char* const (&names)[n]) {
  std::string text;
  const auto add = [&text](const std::string& name) { text += (text.empty() ? "" : "|") + name; };
  for (std::size_t bit = 0; bit < n; ++bit) {
    if ((value >> bit & 1) != 0) add(names[bit]);
  }
  const unsigned rest = static_cast<unsigned>(value) & ~((1U << n) - 1U);
  if (rest != 0) add(fmt::format("0x{:02x}", rest));
  return text.empty() ? "0" : text;
}

// The bytes of a register, most significant first; no byte beyond the array.
std::string ByteText(const std::uint8_t* bytes, int bits) {
  const int count = std::clamp((bits + 7) / 8, 0, static_cast<int>(JTAG_DR_MAX_BYTES));
  const auto last_first = std::make_reverse_iterator(bytes + count);
  return fmt::format("0x{:02x}", fmt::join(last_first, std::make_reverse_iterator(bytes), ""));
}

Field Number(const char* name, std::int64_t value) {
  return {name, std::to_string(value), value};
}
Field Named(const char* name, int value, std::string text) {
  return {name, std::move(text), value};
}
Field Bytes(const char* name, const std::uint8_t* bytes, int bits) {
  return {name, ByteText(bytes, bits), {}};
}

std::string CodeName(int code) {
  if (code == LINK_CONFIG_CDI_MODE) return "CDI_MODE";
  return code == LINK_CONFIG_GET_CDI ? "GET_CDI" : std::to_string(code);
}

std::string ModeName(int value) {
  if (value == CDI_MODE_JTAG5) return "JTAG5";
  return value == CDI_MODE_2WIRE ? "2WIRE" : std::to_string(value);
}

std::string GpioName(int flags) {
  if ((flags & GPIO_FLAG_START) != 0) return "START";
  return (flags & GPIO_FLAG_END) != 0 ? "END" : kPinOperation;
}

}  // namespace

ObservedProbe::ObservedProbe(Probe& probe, std::recursive_mutex& busy,
                             std::vector<EventListener*> listeners, Refused refused, Begin begin)
    : probe_(probe),
      busy_(busy),
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
  const Lock lock(busy_);
  const bool query = code == LINK_CONFIG_GET_CDI;
  if (!query) ++counts_.operations;
  const int result = Guard([&] { return probe_.Config(code, value); });
  if (query) wire_mode_ = result;
  Tell([&]() -> CallEvent {
    Field argument = query ? Number("value", value) : Named("value", value, ModeName(value));
    return {"link_config", {Named("code", code, CodeName(code)), std::move(argument)}, result, {}};
  });
  return result;
}

int ObservedProbe::Reset(int kind) {
  const Lock lock(busy_);
  ++counts_.operations;
  begin_("reset");
  const int result = Guard([&] { return probe_.Reset(kind); });
  Tell([&]() -> CallEvent { return {"link_reset", {Named("kind", kind, "TARGET")}, result, {}}; });
  return result;
}

int ObservedProbe::Insert(int ir_bits, const std::uint8_t* ir, int dr_bits,
                          const std::uint8_t* dr) {
  const Lock lock(busy_);
  ++counts_.operations;
  ++counts_.reads;
  const int extra = wire_mode_ == CDI_ANSWER_2WIRE ? 8 : 0;  // not shifted through the TAP
  counts_.bits += std::max(ir_bits - extra, 0) + std::max(dr_bits - extra, 0);
  ir_bits_ = ir_bits;
  dr_bits_ = dr_bits;
  scan_name_ = fmt::format("IR {} bits {}, DR {} bits {}", ir_bits, ByteText(ir, ir_bits), dr_bits,
                           ByteText(dr, dr_bits));
  const int result = Guard([&] { return probe_.Insert(ir_bits, ir, dr_bits, dr); });
  Tell([&]() -> CallEvent {
    return {"link_jtag_insert",
            {Number("ir_bits", ir_bits), Bytes("ir", ir, ir_bits), Number("dr_bits", dr_bits),
             Bytes("dr", dr, dr_bits)},
            result,
            {}};
  });
  return result;
}

int ObservedProbe::Execute(std::uint8_t* capture) {
  const Lock lock(busy_);
  begin_(scan_name_);
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
  const Lock lock(busy_);
  ++counts_.operations;
  const bool read = (flags & GPIO_FLAG_READ_IN) != 0;
  if (read) ++counts_.reads;
  begin_(GpioName(flags));
  const int result = Guard([&] { return probe_.Gpio(out_value, data, oe_mask, flags); });
  Tell([&]() -> CallEvent {
    const int levels = static_cast<int>(data);
    return {"link_gpio_operator",
            {Named("out_value", out_value, BitNames(out_value, kPinNames)),
             Named("oe_mask", oe_mask, BitNames(oe_mask, kPinNames)),
             Named("flags", flags, BitNames(flags, kFlagNames))},
            result,
            read ? std::vector<Field>{Named("data", levels, BitNames(levels, kPinNames))}
                 : std::vector<Field>{}};
  });
  return result;
}

}  // namespace icehost
