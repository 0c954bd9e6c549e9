// The chain of TAPs on a probe, a report on it, and starter scripts for it.
#ifndef ICESCRIPT_HOST_CHAIN_CHAIN_H_
#define ICESCRIPT_HOST_CHAIN_CHAIN_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/target/chain_place.h"

namespace icehost {

struct ChainTap {
  std::string name;                     // empty if it has none
  std::optional<std::uint32_t> idcode;  // nothing: a reset selects BYPASS
  std::optional<int> ir_bits;           // nothing: unknown
  // For a chain that was declared before it was read, as in OpenOCD:
  bool answered = true;      // false: neither an IDCODE nor BYPASS was read
  std::string manufacturer;  // as OpenOCD names it; may be empty
  std::string expected;      // the IDCODEs that were declared; may be empty
};

struct Chain {
  std::vector<ChainTap> taps;      // the first is the nearest to TDO
  std::optional<int> ir_bits;      // of all TAPs, if measured
  Bits captured_ir;                // of all TAPs, if measured
  std::vector<std::string> notes;  // for the report
  // Faults, the most serious first. A chain without faults is sound and has at least one TAP.
  std::vector<std::string> faults;
};

constexpr int kIdcodeBits = 32;

// The manufacturer in an IDCODE, as JEP106 numbers it: a code in a bank, both counted from 1.
struct Manufacturer {
  unsigned bank;  // 1 to 16
  unsigned code;  // 1 to 126; 0 and 127 are not manufacturers
};
Manufacturer ManufacturerOf(std::uint32_t idcode);
// Returns the name of a manufacturer; empty if icehost does not know it.
std::string ManufacturerName(Manufacturer manufacturer);

// Adds a fault for each IDCODE that is not valid.
void JudgeIdcodes(Chain& chain);
// Returns "TAP 2", followed by the TAP's name in parentheses if it has one; `i` counts from 0. The
// text is Printable.
std::string TapTitle(const Chain& chain, std::size_t i);
// Returns "1 TAP", "2 TAPs" and so on.
std::string CountedTaps(std::size_t taps);

// Returns the place of a TAP in a chain that was read; `tap` counts from 0. Throws Unsupported if
// the chain is not sound or has no such TAP, or if an IR length is unknown.
ChainPlace PlaceIn(const Chain& chain, std::size_t tap);
// Returns `place` if the TAPs and captured IRs of the chain that was read agree with it, and throws
// Unsupported if not. If `place` has no IR lengths, returns one with the whole chain as one TAP.
ChainPlace ConfirmPlace(const Chain& chain, const ChainPlace& place);

// Returns a report for the user, with the TAPs and the notes but not the faults. `where` names the
// probe. The text is Printable.
std::string ReportOf(const Chain& chain, const std::string& where);

// Returns a JTAG script that passes on a sound chain: it shifts through BYPASS, whose instruction
// is the same in every TAP. For each IDCODE it contains a section that is commented out, because no
// standard defines the instruction. If the probe can scan only one TAP, `only` is its index;
// OpenOCD keeps the others in BYPASS. Throws Unsupported if the IR is too long for a script, or if
// the chain has more than kMostTaps TAPs.
std::string JtagScriptOf(const Chain& chain, std::optional<std::size_t> only);

// Returns a GPIO script that passes on a sound chain: it resets the TAPs and reads their IDCODEs
// bit by bit, but ignores the versions.
std::string GpioScriptOf(const Chain& chain);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHAIN_CHAIN_H_
