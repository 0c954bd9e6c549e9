#include <fmt/format.h>

#include "host/chain/chain.h"
#include "host/system/text.h"

namespace icehost {
namespace {

constexpr unsigned kHighestCode = 126;

// Returns, for example, "version 1, part 0xce51, manufacturer 0x23b (bank 5, code 0x3b: NAME)".
std::string DescribeIdcode(std::uint32_t idcode, std::string name) {
  const Manufacturer manufacturer = ManufacturerOf(idcode);
  const auto [bank, code] = manufacturer;
  if (name.empty()) name = ManufacturerName(manufacturer);
  if (code == 0 || code > kHighestCode) name = "unassigned";
  return fmt::format(
      "version {}, part 0x{:04x}, manufacturer 0x{:03x} (bank {}, code 0x{:02x}{}{})", idcode >> 28,
      idcode >> 12 & 0xFFFF, idcode >> 1 & 0x7FF, bank, code, name.empty() ? "" : ": ", name);
}

// Describes the register that was read from the TAP after a reset.
std::string AnswerOf(const ChainTap& tap) {
  if (!tap.answered) return "nothing was read";
  if (!tap.idcode.has_value()) return "no IDCODE";
  return fmt::format("IDCODE 0x{:08x}: {}", *tap.idcode,
                     DescribeIdcode(*tap.idcode, tap.manufacturer));
}

std::string IrOf(const ChainTap& tap) {
  if (!tap.ir_bits.has_value()) return "";
  return fmt::format("       IR {} bits{}\n", *tap.ir_bits,
                     tap.name.empty() ? "" : " (declared in OpenOCD, not measured)");
}

}  // namespace

std::string ReportOf(const Chain& chain, const std::string& where) {
  const std::size_t taps = chain.taps.size();
  std::string text = fmt::format("{} on {}{}\n", CountedTaps(taps), where,
                                 taps > 1 ? "; TAP 1 is nearest to TDO" : "");
  for (std::size_t i = 0; i < taps; ++i) {
    const ChainTap& tap = chain.taps[i];
    text += fmt::format("{}: {}\n", TapTitle(chain, i), AnswerOf(tap)) + IrOf(tap);
    if (!tap.expected.empty()) text += fmt::format("       expected {}\n", tap.expected);
  }
  if (taps > 1 && chain.ir_bits.has_value()) {
    text += fmt::format("IR {} bits in total\n", *chain.ir_bits);
  }
  for (const std::string& note : chain.notes) text += note + "\n";
  return PrintableLines(text);
}

}  // namespace icehost
