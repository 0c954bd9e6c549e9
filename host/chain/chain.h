// The chain of TAPs on a probe, and its text: a report, and the beginnings of scripts.
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
  // For a chain that was declared before it was read.
  bool answered = true;      // false: nothing above was read
  std::string manufacturer;  // as the reader of the IDCODE names it; may be empty
  std::string expected;      // IDCODEs; may be empty
};

struct Chain {
  std::vector<ChainTap> taps;      // the first is the nearest to TDO
  std::optional<int> ir_bits;      // of all TAPs, if measured
  Bits captured_ir;                // of all TAPs, if measured
  std::vector<std::string> notes;  // for the report
  // What is wrong, the most serious first. A chain without faults is sound and has a TAP or more.
  std::vector<std::string> faults;
};

constexpr int kIdcodeBits = 32;

// The manufacturer in an IDCODE, as JEP106 numbers it: a code in a bank, both counted from 1.
struct Manufacturer {
  unsigned bank;  // 1 to 16
  unsigned code;  // 1 to 126; 0 and 127 identify nobody
};
Manufacturer ManufacturerOf(std::uint32_t idcode);
// Returns the name; empty if it is unknown.
std::string ManufacturerName(Manufacturer manufacturer);

// Adds a fault for each IDCODE that is not valid.
void JudgeIdcodes(Chain& chain);
// Returns "TAP 2", followed by the TAP's name in parentheses if it has one; `i` counts from 0. The
// text is printable.
std::string TapTitle(const Chain& chain, std::size_t i);
// Returns "1 TAP", "2 TAPs".
std::string CountedTaps(std::size_t taps);

// Returns the place of a TAP in a chain that was read; `tap` counts from 0. Throws Unsupported if
// the chain is not sound, has no such TAP, or leaves an IR length open.
ChainPlace PlaceIn(const Chain& chain, std::size_t tap);
// Throws Unsupported unless the chain that was read is the one of `place`, as far as the captured
// IRs tell. If that has no lengths, returns the place of all TAPs taken as one.
ChainPlace ConfirmPlace(const Chain& chain, const ChainPlace& place);

// Returns a report for people: the TAPs and notes, a line for each, without its faults. `where`
// names the probe. The text is printable.
std::string ReportOf(const Chain& chain, const std::string& where);

// Returns a JTAG script that passes on this sound chain: it shifts through BYPASS, whose
// instruction is the same in every TAP. For each IDCODE it contains a section that is commented
// out, since no standard defines the instruction. `only` is the one TAP that a scan of the probe
// reaches: OpenOCD keeps the others in BYPASS. Throws Unsupported if the IR is longer than a
// script's may be, or the chain longer than kMostTaps.
std::string JtagScriptOf(const Chain& chain, std::optional<std::size_t> only);

// Returns a GPIO script that passes on this sound chain: it resets the TAPs and reads their IDCODEs
// bit by bit, ignoring the versions.
std::string GpioScriptOf(const Chain& chain);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHAIN_CHAIN_H_
