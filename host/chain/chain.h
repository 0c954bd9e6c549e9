// The chain of TAPs on a probe, a report about the chain, and scripts to start from.
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
  std::string name;                     // empty if the TAP has none
  std::optional<std::uint32_t> idcode;  // nothing if a reset selects BYPASS
  std::optional<int> ir_bits;           // nothing if unknown
  // For a chain that was declared before it was read, as in OpenOCD:
  bool answered = true;      // false if neither an IDCODE nor BYPASS was read
  std::string manufacturer;  // the manufacturer's name in OpenOCD; may be empty
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

// The manufacturer in an IDCODE: a bank of JEP106 (the first is 1) and a code in this bank.
struct Manufacturer {
  unsigned bank;  // 1 to 16
  unsigned code;  // 1 to 126; 0 and 127 are not manufacturers
};
Manufacturer ManufacturerOf(std::uint32_t idcode);
// Returns the name of a manufacturer; empty if it is unknown.
std::string ManufacturerName(Manufacturer manufacturer);

// Adds a fault for each IDCODE that is not valid.
void JudgeIdcodes(Chain& chain);
// Returns "TAP 2 (NAME)" for `i` = 1, or "TAP 2" if the TAP has no name. Makes NAME Printable.
std::string TapTitle(const Chain& chain, std::size_t i);
// Returns "1 TAP", "2 TAPs" and so on.
std::string CountedTaps(std::size_t taps);

// Returns the place of the TAP with the index `tap` in a chain that was read. Throws Unsupported if
// the chain is not sound or has no such TAP, or if an IR length is unknown.
ChainPlace PlaceIn(const Chain& chain, std::size_t tap);
// Throws Unsupported if `chain` is not sound, or if its TAPs or captured IRs do not match `place`.
// Otherwise returns `place` or, if it has no IR lengths, a place that treats all TAPs as one TAP.
ChainPlace ConfirmPlace(const Chain& chain, const ChainPlace& place);

// Returns a report of the TAPs and notes, safe to show on a terminal. `where` names the probe.
std::string ReportOf(const Chain& chain, const std::string& where);

// Returns a JTAG script that passes on a sound chain. It shifts through BYPASS, whose instruction
// consists of ones in every TAP. It contains a section for each IDCODE, but as a comment, because
// no standard defines the instruction. If the probe can scan only one TAP, `only` is its index.
// Throws Unsupported if the IR is too long for a script, or if there are more than kMostTaps TAPs.
std::string JtagScriptOf(const Chain& chain, std::optional<std::size_t> only);

// Returns a GPIO script that passes on a sound chain. It resets the TAPs and reads their IDCODEs
// bit by bit, but ignores the versions.
std::string GpioScriptOf(const Chain& chain);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHAIN_CHAIN_H_
