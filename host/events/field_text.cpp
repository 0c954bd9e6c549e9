#include "host/events/field_text.h"

#include <fmt/format.h>

#include "entry/icescript.h"
#include "host/target/wires.h"

namespace icehost {
namespace {

// "A|B" for the bits that have a name, the rest in hexadecimal; "0" for none.
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

}  // namespace

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
