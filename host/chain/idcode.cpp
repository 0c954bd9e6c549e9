#include "host/chain/idcode.h"

#include <fmt/format.h>

namespace icehost {
namespace {

constexpr unsigned kCodeOfNobody = 0x7F;

}  // namespace

Manufacturer ManufacturerOf(std::uint32_t idcode) {
  return {(idcode >> 8 & 0xF) + 1, idcode >> 1 & 0x7F};
}

std::string WhyNoIdcode(std::uint32_t idcode) {
  // The standard keeps this code free, so that a marker may stand for the end of a chain.
  if (ManufacturerOf(idcode).code == kCodeOfNobody) return "no manufacturer may have code 0x7f";
  if (idcode >> 1 == 0) return "manufacturer, part and version are all 0";
  return "";
}

std::string DescribeIdcode(std::uint32_t idcode, const std::string& manufacturer) {
  const auto [bank, code] = ManufacturerOf(idcode);
  const bool nobody = code == 0 || code == kCodeOfNobody;
  const std::string name = nobody ? "none has it" : manufacturer;
  return fmt::format(
      "version {}, part 0x{:04x}, manufacturer 0x{:03x} (bank {}, code 0x{:02x}{}{})", idcode >> 28,
      idcode >> 12 & 0xFFFF, idcode >> 1 & 0x7FF, bank, code, name.empty() ? "" : ": ", name);
}

}  // namespace icehost
