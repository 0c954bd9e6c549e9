#include "host/events/observed_probe.h"

#include <algorithm>
#include <utility>

#include "entry/icescript.h"
#include "host/system/errors.h"
#include "host/system/interrupt.h"

namespace icehost {
namespace {

// No byte beyond the array.
std::string RegisterText(const std::uint8_t* bytes, int bits) {
  return ByteText(bytes, static_cast<std::size_t>(
                             std::clamp((bits + 7) / 8, 0, static_cast<int>(JTAG_DR_MAX_BYTES))));
}

Field Bytes(const char* name, const std::uint8_t* bytes, int bits) {
  return {name, Field::Kind::kBytes, 0, RegisterText(bytes, bits)};
}

}  // namespace

ObservedProbe::ObservedProbe(Probe& probe, CallGuide& guide, std::vector<EventListener*> listeners,
                             Callbacks callbacks)
    : probe_(probe),
      guide_(guide),
      listeners_(std::move(listeners)),
      callbacks_(std::move(callbacks)) {}

void ObservedProbe::Begin(bool begins_operation) {
  begin_step_ = callbacks_.steps();
  callbacks_.begin(begins_operation);
}

template <class Ask>
int ObservedProbe::Guard(const char* function, Ask ask) {
  under_way_.function = function;
  ThrowIfInterrupted();
  try {
    const int result = ask();
    Leave();
    return result;
  } catch (const Unsupported& error) {
    callbacks_.refused(error.what());
    Leave();
    return -1;
  }
}

template <class MakeEvent>
void ObservedProbe::Tell(MakeEvent make_event) {
  if (listeners_.empty()) return;
  CallEvent event = make_event();
  event.source = under_way_.source;
  event.steps = {begin_step_, callbacks_.steps()};
  for (EventListener* const listener : listeners_) listener->OnCall(event);
}

int ObservedProbe::Config(int code, int value) {
  const bool query = code == LINK_CONFIG_GET_CDI;
  if (!query) ++counts_.operations;
  under_way_.source = guide_.NextOperation();
  Begin(false);
  const int result = Guard("link_config", [&] { return probe_.Config(code, value); });
  if (query) wire_mode_ = result;
  Tell([&]() -> CallEvent {
    const auto kind = query ? Field::Kind::kNumber : Field::Kind::kMode;
    return {"link_config",
            {{"code", Field::Kind::kCode, code, ""}, {"value", kind, value, ""}},
            result,
            {},
            {},
            {},
            {}};
  });
  return result;
}

int ObservedProbe::Reset(int kind) {
  ++counts_.operations;
  under_way_.source = guide_.NextOperation();
  Begin(true);
  const int result = Guard("link_reset", [&] { return probe_.Reset(kind); });
  Tell([&]() -> CallEvent {
    return {"link_reset", {{"kind", Field::Kind::kReset, kind, ""}}, result, {}, {}, {}, {}};
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
  Begin(false);
  const int result =
      Guard("link_jtag_insert", [&] { return probe_.Insert(ir_bits, ir, dr_bits, dr); });
  Tell([&]() -> CallEvent {
    return {"link_jtag_insert",
            {{"ir_bits", Field::Kind::kNumber, ir_bits, ""},
             Bytes("ir", ir, ir_bits),
             {"dr_bits", Field::Kind::kNumber, dr_bits, ""},
             Bytes("dr", dr, dr_bits)},
            result,
            {},
            {},
            {},
            {}};
  });
  return result;
}

int ObservedProbe::Execute(std::uint8_t* capture) {
  Begin(true);
  int result = Guard("link_jtag_execute", [&] {
    const int executed = probe_.Execute(capture);
    if (const std::string why = probe_.Doubt(); !why.empty()) callbacks_.doubt(why);
    return executed;
  });
  const bool captured = result == 0;
  const int extra = wire_mode_ == CDI_ANSWER_2WIRE ? 1 : 0;
  const std::uint8_t* const dr = capture + kDrCaptureByte + extra;
  // Of a length that is no longer made for two wires, no more is shifted than the arrays hold.
  const int dr_bits = std::min(dr_bits_, 8 * static_cast<int>(JTAG_DR_MAX_BYTES)) - 8 * extra;
  const int ir_bits = ir_bits_ - 8 * extra;
  const bool tells_ir = probe_.CapturesIr() && ir_bits <= 8 * kDrCaptureByte;
  std::vector<Comparison> comparisons;
  if (captured && !guide_.CompareScan(capture, tells_ir ? ir_bits : 0, dr, dr_bits, comparisons)) {
    result = -1;
  }
  Tell([&]() -> CallEvent {
    std::vector<Field> outputs;
    if (captured && tells_ir) outputs.push_back(Bytes("ir_out", capture, ir_bits));
    if (captured) outputs.push_back(Bytes("dr_out", dr, dr_bits));
    return {"link_jtag_execute", {}, result, std::move(outputs), std::move(comparisons), {}, {}};
  });
  return result;
}

int ObservedProbe::Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) {
  ++counts_.operations;
  const bool read = (flags & GPIO_FLAG_READ_IN) != 0;
  if (read) ++counts_.reads;
  under_way_.source = guide_.NextPinOperation(data);
  Begin(true);
  int result =
      Guard("link_gpio_operator", [&] { return probe_.Gpio(out_value, data, oe_mask, flags); });
  std::vector<Comparison> comparisons;
  const bool was_read = read && result >= 0;
  if (was_read && !guide_.ComparePins(data, comparisons)) result = -1;
  Tell([&]() -> CallEvent {
    CallEvent event = {"link_gpio_operator",
                       {{"out_value", Field::Kind::kPins, out_value, ""},
                        {"oe_mask", Field::Kind::kPins, oe_mask, ""},
                        {"flags", Field::Kind::kFlags, flags, ""}},
                       result,
                       {},
                       std::move(comparisons),
                       {},
                       {}};
    if (was_read) event.outputs.push_back({"data", Field::Kind::kPins, static_cast<int>(data), ""});
    return event;
  });
  return result;
}

}  // namespace icehost
