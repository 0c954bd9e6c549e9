#include "host/events/call_fields.h"

#include <fmt/format.h>

#include "entry/icescript.h"
#include "host/target/bits.h"
#include "host/target/wires.h"

namespace icehost {
namespace {

// Appends the bits as "A|B|0x40", with unnamed bits in hexadecimal, or "0" if no bit is set.
template <std::size_t n>
void AppendBits(int value, const char* const (&names)[n], std::string& text) {
  const std::size_t begin = text.size();
  const auto separator = [&text, begin] { return text.size() > begin ? "|" : ""; };
  for (std::size_t bit = 0; bit < n; ++bit) {
    if ((value >> bit & 1) != 0) text.append(separator()).append(names[bit]);
  }
  const unsigned rest = static_cast<unsigned>(value) & ~((1U << n) - 1U);
  if (rest != 0) text += fmt::format("{}0x{:02x}", separator(), rest);
  if (text.size() == begin) text += '0';
}

Field Number(const char* name, Field::Kind kind, int number) {
  return {name, kind, number, ""};
}

Field Bytes(const char* name, const std::string& bytes) {
  return {name, Field::Kind::kBytes, 0, ByteText(bytes)};
}

// Appends the bits that a scan shifts through the whole chain, if there are any.
void AppendWhole(const char* in_name, const Bits& in, const char* out_name, const Bits& out,
                 CallFields& fields) {
  if (in.empty()) return;
  fields.outputs.push_back({in_name, Field::Kind::kBytes, 0, BitText(in)});
  fields.outputs.push_back({out_name, Field::Kind::kBytes, 0, BitText(out)});
}

CallFields Fields(const ConfigCall& call) {
  const bool query = call.code == LINK_CONFIG_GET_CDI;
  return {{Number("code", Field::Kind::kCode, call.code),
           Number("value", query ? Field::Kind::kNumber : Field::Kind::kMode, call.value)},
          {}};
}

CallFields Fields(const ResetCall& call) {
  return {{Number("kind", Field::Kind::kReset, call.kind)}, {}};
}

CallFields Fields(const InsertCall& call) {
  const Scan& scan = *call.scan;
  return {{Number("ir_bits", Field::Kind::kNumber, scan.ir.bits), Bytes("ir", scan.ir.in),
           Number("dr_bits", Field::Kind::kNumber, scan.dr.bits), Bytes("dr", scan.dr.in)},
          {}};
}

CallFields Fields(const ExecuteCall& call) {
  CallFields fields;
  if (call.scan->ir.out.has_value()) fields.outputs.push_back(Bytes("ir_out", *call.scan->ir.out));
  if (call.scan->dr.out.has_value()) fields.outputs.push_back(Bytes("dr_out", *call.scan->dr.out));
  if (const ChainScan* const chain = call.scan->chain; chain != nullptr) {
    AppendWhole("chain_ir", chain->ir_in, "chain_ir_out", chain->ir_out, fields);
    AppendWhole("chain_dr", chain->dr_in, "chain_dr_out", chain->dr_out, fields);
  }
  return fields;
}

CallFields Fields(const GpioCall& call) {
  CallFields fields = {{Number("out_value", Field::Kind::kPins, call.out_value),
                        Number("oe_mask", Field::Kind::kPins, call.oe_mask),
                        Number("flags", Field::Kind::kFlags, call.flags)},
                       {}};
  if (call.data.has_value()) {
    fields.outputs.push_back(Number("data", Field::Kind::kPins, *call.data));
  }
  return fields;
}

}  // namespace

CallFields FieldsOf(const HostCall& call) {
  return std::visit([](const auto& one) { return Fields(one); }, call);
}

// The names are in the order of the types in HostCall.
const char* FunctionOf(const HostCall& call) {
  constexpr const char* kNames[] = {"link_config", "link_reset", "link_jtag_insert",
                                    "link_jtag_execute", "link_gpio_operator"};
  return kNames[call.index()];
}

const char* RegisterOf(std::string_view output) {
  if (output == "ir_out") return "IR ";
  return output == "dr_out" ? "DR " : "";
}

bool AsksForInterface(const CallEvent& call) {
  const auto* const config = call.As<ConfigCall>();
  return config != nullptr && config->code == LINK_CONFIG_GET_CDI;
}

const char* NameOf(const Field& field) {
  const int number = field.number;
  switch (field.kind) {
    case Field::Kind::kCode:
      if (number == LINK_CONFIG_CDI_MODE) return "CDI_MODE";
      return number == LINK_CONFIG_GET_CDI ? "GET_CDI" : nullptr;
    case Field::Kind::kMode:
      if (number == CDI_MODE_JTAG5) return "JTAG5";
      return number == CDI_MODE_2WIRE ? "2WIRE" : nullptr;
    case Field::Kind::kReset:
      return number == LINK_RESET_TARGET ? "TARGET" : nullptr;
    default:
      return nullptr;
  }
}

void AppendText(const Field& field, std::string& text) {
  if (field.kind == Field::Kind::kBytes) {
    text += field.bytes;
  } else if (field.kind == Field::Kind::kPins) {
    AppendBits(field.number, kPinNames, text);
  } else if (field.kind == Field::Kind::kFlags) {
    AppendBits(field.number, kFlagNames, text);
  } else if (const char* const name = NameOf(field); name != nullptr) {
    text += name;
  } else {
    const fmt::format_int digits(field.number);
    text.append(digits.data(), digits.size());
  }
}

}  // namespace icehost
