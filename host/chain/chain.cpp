#include "host/chain/chain.h"

#include <fmt/format.h>

#include "host/chain/idcode.h"
#include "host/system/printable.h"

namespace icehost {

void JudgeIdcodes(Chain& chain) {
  for (std::size_t i = 0; i < chain.taps.size(); ++i) {
    const auto& idcode = chain.taps[i].idcode;
    if (!idcode.has_value()) continue;
    const std::string why = WhyNoIdcode(*idcode);
    if (why.empty()) continue;
    chain.faults.push_back(
        fmt::format("{}: 0x{:08x} is no valid IDCODE ({})", TapTitle(chain, i), *idcode, why));
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
