#ifndef ICESCRIPT_HOST_TARGET_CHAIN_PLACE_H_
#define ICESCRIPT_HOST_TARGET_CHAIN_PLACE_H_

#include <cstddef>
#include <vector>

#include "host/target/bits.h"

namespace icehost {

// The largest number of TAPs in a chain that icehost supports.
constexpr int kMostTaps = 64;

enum class TapColumn { kIr, kDr };

// The TAP that scripts address, and its place in the chain. The other TAPs stay in BYPASS. TAP 0 is
// the nearest to TDO, so its bits are shifted in first and shifted out first.
struct ChainPlace {
  std::vector<int> ir_lengths;  // of all TAPs, in bits; if empty, the TAP is treated as alone
  std::size_t tap = 0;          // the index of the TAP, from 0

  // Return the number of bits that a scan shifts before and after this TAP's bits.
  std::size_t Before(TapColumn column) const;
  std::size_t After(TapColumn column) const;
  // Returns the bits to shift through the whole chain so that this TAP receives `own`. The other
  // TAPs receive ones in an IR scan (the instruction BYPASS) and zeros in a DR scan.
  Bits Whole(TapColumn column, const Bits& own) const;
  // Returns this TAP's bits of `whole`, which must have at least Before + After bits.
  Bits Own(TapColumn column, const Bits& whole) const;
};

// The bits that a scan shifts into and out of all TAPs of a chain, the first bit first.
struct ChainScan {
  Bits ir_in;
  Bits ir_out;
  Bits dr_in;
  Bits dr_out;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TARGET_CHAIN_PLACE_H_
