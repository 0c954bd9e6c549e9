// The IR lengths of the TAPs of a chain.
#ifndef ICESCRIPT_HOST_CHAIN_IR_LENGTHS_H_
#define ICESCRIPT_HOST_CHAIN_IR_LENGTHS_H_

#include <vector>

#include "host/target/bits.h"

namespace icehost {

// IEEE 1149.1: of each captured IR the two bits that come first are 1 and 0. The lengths that
// `taps` TAPs with this captured IR in all may have, the TAP nearest to TDO first: every way that
// there is, or `most` of them.
std::vector<std::vector<int>> IrLengths(const Bits& captured, std::size_t taps, std::size_t most);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHAIN_IR_LENGTHS_H_
