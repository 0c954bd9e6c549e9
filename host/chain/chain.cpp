#include "host/chain/chain.h"

#include <fmt/format.h>

#include "host/system/text.h"

namespace icehost {
namespace {

// A reserved manufacturer code. ChainReader's marker contains it, to differ from any IDCODE.
constexpr unsigned kCodeOfNobody = 0x7F;

// Returns why a value is not a valid IDCODE, or an empty text if it may be valid.
std::string WhyNoIdcode(std::uint32_t idcode) {
  if ((idcode & 1) == 0) return "bit 0 of an IDCODE must be 1";
  if (ManufacturerOf(idcode).code == kCodeOfNobody) return "manufacturer code 0x7f is reserved";
  if (idcode >> 1 == 0) return "manufacturer, part and version are all 0";
  return "";
}

}  // namespace

Manufacturer ManufacturerOf(std::uint32_t idcode) {
  return {(idcode >> 8 & 0xF) + 1, idcode >> 1 & 0x7F};
}

void JudgeIdcodes(Chain& chain) {
  for (std::size_t i = 0; i < chain.taps.size(); ++i) {
    const auto& idcode = chain.taps[i].idcode;
    if (!idcode.has_value()) continue;
    const std::string why = WhyNoIdcode(*idcode);
    if (why.empty()) continue;
    chain.faults.push_back(
        fmt::format("{}: 0x{:08x} is not a valid IDCODE ({})", TapTitle(chain, i), *idcode, why));
  }
}

std::string TapTitle(const Chain& chain, std::size_t i) {
  const std::string& name = chain.taps[i].name;
  if (name.empty()) return fmt::format("TAP {}", i + 1);
  return fmt::format("TAP {} ({:.40})", i + 1, Printable(name));
}

std::string CountedTaps(std::size_t taps) {
  return fmt::format("{} TAP{}", taps, taps == 1 ? "" : "s");
}

}  // namespace icehost
