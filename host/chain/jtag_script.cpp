#include <fmt/format.h>

#include <algorithm>

#include "entry/icescript.h"
#include "host/chain/chain_script.h"
#include "host/chain/idcode.h"
#include "host/system/errors.h"
#include "host/target/bits.h"

namespace icehost {
namespace {

constexpr std::size_t kMostScriptIrBits = std::size_t{8} * JTAG_IR_MAX_BYTES;

constexpr char kHead[] =
    "# Made by icehost detect. To be completed with the instructions of the chip's data sheet.\n"
    "\n"
    "[CONTROL]\n"
    "CDI=5\n"
    "\n"
    "# All ones is BYPASS, by IEEE 1149.1: what is shifted in comes out a bit later for each "
    "TAP.\n";

// What BYPASS is tried with: neither all alike nor the same backwards.
constexpr std::uint64_t kPattern = 0x5AC3'0F71;
constexpr int kPatternBits = 32;

// ",0x01,0x02": the bytes of a value, least significant first.
std::string BytesOf(const Bits& bits) {
  std::string text;
  for (std::size_t at = 0; at < bits.size(); at += 8) {
    const auto first = bits.begin() + static_cast<std::ptrdiff_t>(at);
    const Bits byte(
        first, first + static_cast<std::ptrdiff_t>(std::min<std::size_t>(8, bits.size() - at)));
    text += fmt::format(",0x{:02x}", NumberOfBits(byte));
  }
  return text;
}

std::string Field(const Bits& bits) {
  return fmt::format("{}{}", bits.size(), BytesOf(bits));
}

// `bits` with so many zeros before and behind them.
Bits Between(std::size_t before, Bits bits, std::size_t behind) {
  bits.insert(bits.begin(), before, false);
  bits.insert(bits.end(), behind, false);
  return bits;
}

struct Expected {
  Bits value;
  Bits mask;  // empty: all bits count
};

// The lines behind the name of a section, each behind `comment`.
std::string Scan(const std::string& comment, const Bits& ir, const Bits& dr,
                 const Expected& expected) {
  std::string lines = fmt::format("{0}IR={1}\n{0}DR=R,{2}\n{0}TDO={3}\n", comment, Field(ir),
                                  Field(dr), BytesOf(expected.value).substr(1));
  if (!expected.mask.empty()) {
    lines += fmt::format("{}MASK={}\n", comment, BytesOf(expected.mask).substr(1));
  }
  return lines;
}

// The scan of a chain, or of one TAP in it.
class Script {
 public:
  Script(const Chain& chain, std::optional<std::size_t> only) : chain_(chain), only_(only) {}

  std::string Text() const;

 private:
  bool Reaches(std::size_t i) const { return !only_.has_value() || i == *only_; }
  std::size_t IrBits() const;
  bool IrsAreKnown() const;
  std::string BypassSection() const;
  std::string IdcodeSection(std::size_t i) const;

  const Chain& chain_;
  std::optional<std::size_t> only_;
};

std::size_t Script::IrBits() const {
  if (chain_.ir_bits.has_value()) return static_cast<std::size_t>(*chain_.ir_bits);
  int bits = 0;
  for (std::size_t i = 0; i < chain_.taps.size(); ++i) {
    if (Reaches(i)) bits += chain_.taps[i].ir_bits.value_or(0);
  }
  return static_cast<std::size_t>(bits);
}

bool Script::IrsAreKnown() const {
  return std::all_of(chain_.taps.begin(), chain_.taps.end(),
                     [](const ChainTap& tap) { return tap.ir_bits.has_value(); });
}

// All TAPs delay what is shifted in, also those that the scan does not reach; what these are given
// meanwhile is the probe's business.
std::string Script::BypassSection() const {
  const std::size_t taps = chain_.taps.size();
  const Bits pattern = BitsOfNumber(kPattern, kPatternBits);
  const Bits mask = only_.has_value() ? Between(taps, Bits(kPatternBits, true), 0) : Bits();
  return "[BYPASS]\n" + Scan("", Bits(IrBits(), true), Between(0, pattern, taps),
                             {Between(taps, pattern, 0), mask});
}

// Whoever fills in the instruction has the rest of the scan: the other TAPs stay in BYPASS.
std::string Script::IdcodeSection(std::size_t i) const {
  std::size_t before = 0;
  std::size_t behind = 0;
  int first = 0;
  for (std::size_t other = 0; other < chain_.taps.size(); ++other) {
    if (other == i || !Reaches(other)) continue;
    ++(other < i ? before : behind);
    if (other < i) first += *chain_.taps[other].ir_bits;
  }
  const auto place = [&](std::uint32_t number) {
    return Between(before, BitsOfNumber(number, kIdcodeBits), behind);
  };
  const std::uint32_t idcode = *chain_.taps[i].idcode;
  const std::string text = fmt::format(
      "\n# {}: IDCODE 0x{:08x} of any version. Put its IDCODE instruction into IR bits {} to {},\n"
      "# which hold BYPASS, and take away the # of the lines below.\n"
      "#[READ_IDCODE_{}]\n",
      TapTitle(chain_, i), idcode, first, first + *chain_.taps[i].ir_bits - 1, i + 1);
  return text + Scan("#", Bits(IrBits(), true), Bits(before + kIdcodeBits + behind),
                     {place(idcode), place(kIdcodeWithoutVersion)});
}

std::string Script::Text() const {
  if (chain_.taps.size() > kMostTaps) throw Unsupported("no JTAG script: more than 64 TAPs");
  if (IrBits() > kMostScriptIrBits) {
    throw Unsupported(fmt::format("no JTAG script: the IR has {} bits, and in a script at most {}",
                                  IrBits(), kMostScriptIrBits));
  }
  std::string text = kHead + BypassSection();
  if (!IrsAreKnown()) {
    return text + "\n# Which bits of the IR belong to which TAP could not be told.\n";
  }
  for (std::size_t i = 0; i < chain_.taps.size(); ++i) {
    if (Reaches(i) && chain_.taps[i].idcode.has_value()) text += IdcodeSection(i);
  }
  return text;
}

}  // namespace

std::string JtagScriptOf(const Chain& chain, std::optional<std::size_t> only) {
  return Script(chain, only).Text();
}

}  // namespace icehost
