#include <fmt/format.h>

#include <optional>

#include "host/chain/chain_script.h"
#include "host/chain/idcode.h"

namespace icehost {
namespace {

// START alone says how the pins begin: all low, so that there is no way to spare the target.
constexpr char kHead[] =
    "# Made by icehost detect: resets the TAPs and reads what they answer then, every TCK edge a "
    "line.\n"
    "# START pulls every pin low: NRST resets the target.\n"
    "[ORVEX_ICE_GPIO]\n"
    "START\n"
    "GPIO_OE=0x1F                # TDO is the target's to drive\n"
    "NRST=1,TRST=1,TMS=1\n"
    "REPT=5                      # Test-Logic-Reset\n"
    "TCK=1\n"
    "TCK=0\n"
    "ENDR\n"
    "TMS=0\n"
    "TCK=1                       # Run-Test/Idle\n"
    "TCK=0,TMS=1\n"
    "TCK=1                       # Select-DR-Scan\n"
    "TCK=0,TMS=0\n"
    "TCK=1                       # Capture-DR\n"
    "TCK=0\n";

constexpr char kTail[] =
    "\n"
    "TMS=1\n"
    "REPT=5                      # back to Test-Logic-Reset\n"
    "TCK=1\n"
    "TCK=0\n"
    "ENDR\n"
    "END\n";

// One bit on TDO; where `level` is nothing, it may be any.
std::string ReadBit(const std::string& name, std::optional<bool> level) {
  const std::string read =
      level.has_value() ? fmt::format("PRINT=GPIO_IN               # expect TDO={:d}", *level)
                        : "PRINT=GPIO_IN";
  return fmt::format("TCK=1                       # {}\nTCK=0\n{}\n", name, read);
}

std::string ReadTap(const Chain& chain, std::size_t i) {
  const ChainTap& tap = chain.taps[i];
  if (!tap.idcode.has_value()) {
    return fmt::format("\n# {} has no IDCODE\n", TapTitle(chain, i)) + ReadBit("BYPASS", false);
  }
  std::string lines = fmt::format("\n# {}: IDCODE 0x{:08x}\n", TapTitle(chain, i), *tap.idcode);
  for (int bit = 0; bit < kIdcodeBits; ++bit) {
    const bool level = (*tap.idcode >> bit & 1) != 0;
    const bool compared = (kIdcodeWithoutVersion >> bit & 1) != 0;
    lines += compared ? ReadBit(fmt::format("bit {}", bit), level)
                      : ReadBit(fmt::format("bit {}, of the version", bit), std::nullopt);
  }
  return lines;
}

}  // namespace

std::string GpioScriptOf(const Chain& chain) {
  std::string script = kHead;
  for (std::size_t i = 0; i < chain.taps.size(); ++i) script += ReadTap(chain, i);
  return script + kTail;
}

}  // namespace icehost
