#include <fmt/format.h>

#include <algorithm>

#include "entry/icescript.h"
#include "host/chain/chain.h"
#include "host/system/errors.h"
#include "host/target/bits.h"

namespace icehost {
namespace {

constexpr std::size_t kLongestScriptIr = std::size_t{8} * JTAG_IR_MAX_BYTES;
// The top four bits are the version, which may differ between chips of one design.
constexpr std::uint32_t kIdcodeWithoutVersion = 0x0FFFFFFF;

constexpr char kJtagHead[] =
    R"(# Written by icehost detect. Complete it with the instructions in the chip's data sheet.

[CONTROL]
CDI=5

# An IR of all ones selects BYPASS (IEEE 1149.1), in which each TAP delays the pattern by one bit.
)";

// The pattern to shift through BYPASS. It contains both levels and is not a palindrome.
constexpr std::uint64_t kPattern = 0x5AC3'0F71;
constexpr int kPatternBits = 32;

std::string Field(const Bits& bits) {
  return fmt::format("{},{}", bits.size(), ByteList(bits));
}

Bits Between(std::size_t before, Bits bits, std::size_t after) {
  bits.insert(bits.begin(), before, false);
  bits.insert(bits.end(), after, false);
  return bits;
}

struct Expected {
  Bits value;
  Bits mask;  // empty if all bits are compared
};

// Returns the lines of a section after its header. Each line begins with `comment`.
std::string Scan(const std::string& comment, const Bits& ir, const Bits& dr,
                 const Expected& expected) {
  std::string lines = fmt::format("{0}IR={1}\n{0}DR=R,{2}\n{0}TDO={3}\n", comment, Field(ir),
                                  Field(dr), ByteList(expected.value));
  if (!expected.mask.empty()) {
    lines += fmt::format("{}MASK={}\n", comment, ByteList(expected.mask));
  }
  return lines;
}

// A JTAG script for a whole chain or for one of its TAPs.
class Script {
 public:
  Script(const Chain& chain, std::optional<std::size_t> only) : chain_(chain), only_(only) {}

  std::string Text() const;

 private:
  bool Reaches(std::size_t i) const { return !only_.has_value() || i == *only_; }
  std::size_t IrBits() const;
  std::string BypassSection() const;
  std::string IdcodeSection(std::size_t i) const;
  std::string OptionsComment() const;

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

// Every TAP delays the pattern by one bit, even if the scan addresses only one TAP. In such a scan,
// the mask excludes the first bits shifted out, because they depend on bits that the probe adds.
std::string Script::BypassSection() const {
  const std::size_t taps = chain_.taps.size();
  const Bits pattern = BitsOfNumber(kPattern, kPatternBits);
  const Bits mask = only_.has_value() ? Between(taps, Bits(kPatternBits, true), 0) : Bits();
  return "[BYPASS]\n" + Scan("", Bits(IrBits(), true), Between(0, pattern, taps),
                             {Between(taps, pattern, 0), mask});
}

// Every TAP stays in BYPASS until users fill in the IDCODE instruction of TAP `i`.
std::string Script::IdcodeSection(std::size_t i) const {
  std::size_t before = 0;
  std::size_t after = 0;
  int first = 0;
  for (std::size_t other = 0; other < chain_.taps.size(); ++other) {
    if (other == i || !Reaches(other)) continue;
    ++(other < i ? before : after);
    if (other < i) first += *chain_.taps[other].ir_bits;
  }
  const auto place = [&](std::uint32_t number) {
    return Between(before, BitsOfNumber(number, kIdcodeBits), after);
  };
  const std::uint32_t idcode = *chain_.taps[i].idcode;
  const std::string text = fmt::format(
      "\n# {}: IDCODE 0x{:08x}. To compare it without its version, replace BYPASS in IR\n"
      "# bits {} to {} with this TAP's IDCODE instruction, and remove the # from the lines below.\n"
      "#[READ_IDCODE_{}]\n",
      TapTitle(chain_, i), idcode, first, first + *chain_.taps[i].ir_bits - 1, i + 1);
  return text + Scan("#", Bits(IrBits(), true), Bits(before + kIdcodeBits + after),
                     {place(idcode), place(kIdcodeWithoutVersion)});
}

// Returns a comment on the options that let a script address one TAP as if it were alone.
std::string Script::OptionsComment() const {
  std::vector<int> lengths;
  for (const ChainTap& tap : chain_.taps) lengths.push_back(*tap.ir_bits);
  return fmt::format("\n# To run a script for TAP N alone: icehost run --chain {} --tap N\n",
                     fmt::join(lengths, ","));
}

std::string Script::Text() const {
  if (chain_.taps.size() > kMostTaps) {
    throw Unsupported("cannot write a JTAG script: the chain has more than 64 TAPs");
  }
  if (IrBits() > kLongestScriptIr) {
    throw Unsupported(fmt::format(
        "cannot write a JTAG script: the IR has {} bits, but a script allows at most {}", IrBits(),
        kLongestScriptIr));
  }
  std::string text = kJtagHead + BypassSection();
  const auto is_known = [](const ChainTap& tap) { return tap.ir_bits.has_value(); };
  if (!std::all_of(chain_.taps.begin(), chain_.taps.end(), is_known)) {
    return text + "\n# It is unknown which bits of the IR belong to which TAP.\n";
  }
  if (!only_.has_value() && chain_.taps.size() > 1) text += OptionsComment();
  for (std::size_t i = 0; i < chain_.taps.size(); ++i) {
    if (Reaches(i) && chain_.taps[i].idcode.has_value()) text += IdcodeSection(i);
  }
  return text;
}

constexpr char kGpioHead[] =
    R"(# Written by icehost detect. This script resets the TAPs and reads their answers.
# START drives every pin low, so NRST resets the target.
[ORVEX_ICE_GPIO]
START
GPIO_OE=0x1F                # the target drives TDO
NRST=1,TRST=1,TMS=1
REPT=5                      # Test-Logic-Reset
TCK=1
TCK=0
ENDR
TMS=0
TCK=1                       # Run-Test/Idle
TCK=0,TMS=1
TCK=1                       # Select-DR-Scan
TCK=0,TMS=0
TCK=1                       # Capture-DR
TCK=0
)";

constexpr char kGpioTail[] = R"(
TMS=1
REPT=5                      # back to Test-Logic-Reset
TCK=1
TCK=0
ENDR
END
)";

// Returns lines that read one bit of TDO and, if `level` is given, expect this level.
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
                      : ReadBit(fmt::format("bit {} (version)", bit), std::nullopt);
  }
  return lines;
}

}  // namespace

std::string JtagScriptOf(const Chain& chain, std::optional<std::size_t> only) {
  return Script(chain, only).Text();
}

std::string GpioScriptOf(const Chain& chain) {
  std::string script = kGpioHead;
  for (std::size_t i = 0; i < chain.taps.size(); ++i) script += ReadTap(chain, i);
  return script + kGpioTail;
}

}  // namespace icehost
