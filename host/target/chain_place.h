// The place of a TAP in its chain.
#ifndef ICESCRIPT_HOST_TARGET_CHAIN_PLACE_H_
#define ICESCRIPT_HOST_TARGET_CHAIN_PLACE_H_

#include <cstddef>
#include <vector>

#include "host/target/bits.h"

namespace icehost {

// No chain is longer than this.
constexpr int kMostTaps = 64;

enum class TapColumn { kIr, kDr };

// The TAP that scripts address, among others that stay in BYPASS. The first TAP is the nearest to
// TDO: its bits are the first to be shifted, in and out.
struct ChainPlace {
  std::vector<int> ir_lengths;  // of all TAPs; empty: not known, and the TAP is taken to be alone
  std::size_t tap = 0;          // its index

  // The bits of the TAPs before and after this one.
  std::size_t Before(TapColumn column) const;
  std::size_t After(TapColumn column) const;
  // Returns what the whole chain shifts, so that the TAP gets these bits: ones around those of an
  // IR, the instruction BYPASS, and zeros around those of a DR.
  Bits Whole(TapColumn column, const Bits& own) const;
  // Returns the TAP's bits among those of the whole chain, which are no fewer than the others'.
  Bits Own(TapColumn column, const Bits& whole) const;
};

// What a scan shifts through all TAPs of a chain.
struct ChainScan {
  Bits ir_in;
  Bits ir_out;
  Bits dr_in;
  Bits dr_out;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TARGET_CHAIN_PLACE_H_
