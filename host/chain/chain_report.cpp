#include "host/chain/chain_report.h"

#include <fmt/format.h>

#include "host/chain/idcode.h"
#include "host/system/printable.h"

namespace icehost {
namespace {

// What a reset selects in the TAP.
std::string AnswerOf(const ChainTap& tap, const Manufacturers& manufacturers) {
  if (!tap.answered) return "nothing was read";
  if (!tap.idcode.has_value()) return "no IDCODE";
  const std::uint32_t idcode = *tap.idcode;
  std::string name = tap.manufacturer;
  if (name.empty()) name = manufacturers.NameOf(ManufacturerOf(idcode));
  return fmt::format("IDCODE 0x{:08x}: {}", idcode, DescribeIdcode(idcode, name));
}

std::string IrOf(const ChainTap& tap) {
  if (!tap.ir_bits.has_value()) return "";
  return fmt::format("       IR {} bits{}\n", *tap.ir_bits,
                     tap.name.empty() ? "" : ": OpenOCD's word, not measured");
}

std::string TextOf(const Chain& chain, const std::string& where,
                   const Manufacturers& manufacturers) {
  const std::size_t taps = chain.taps.size();
  std::string text = fmt::format("{} on {}{}\n", CountedTaps(taps), where,
                                 taps > 1 ? "; TAP 1 is the nearest to TDO" : "");
  for (std::size_t i = 0; i < taps; ++i) {
    const ChainTap& tap = chain.taps[i];
    text += fmt::format("{}: {}\n", TapTitle(chain, i), AnswerOf(tap, manufacturers));
    text += IrOf(tap);
    if (!tap.expected.empty()) text += fmt::format("       expected {}\n", tap.expected);
  }
  if (taps > 1 && chain.ir_bits.has_value()) {
    text += fmt::format("IR {} bits in all\n", *chain.ir_bits);
  }
  for (const std::string& note : chain.notes) text += note + "\n";
  return text;
}

}  // namespace

std::string ReportOf(const Chain& chain, const std::string& where,
                     const Manufacturers& manufacturers) {
  return PrintableLines(TextOf(chain, where, manufacturers));
}

}  // namespace icehost
