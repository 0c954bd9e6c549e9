// The operations of a script, the values that it expects, and the values that a run has read.
#ifndef ICESCRIPT_HOST_CHECK_PLAN_H_
#define ICESCRIPT_HOST_CHECK_PLAN_H_

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/check/problems.h"

namespace icehost {

// A pin operation, packed into one word because a script may have millions.
struct PinOperation {
  unsigned line : 30;
  unsigned begins_block : 1;  // the operation follows a REPT
  unsigned ends_block : 1;    // an ENDR follows the operation
};

struct JtagOperation {
  int line;  // the line of the key DR, CDI or RESET
  std::string section;
  bool reads = false;
  int ir_line = 0;  // the line of the key IR, or 0 if the operation is not a scan
};

// A value that the script expects an operation to read.
struct Expectation {
  enum class Of { kIr, kDr, kPins };

  std::size_t operation;  // the index of the operation in the plan
  Of of;
  Place place;        // of the expected value
  std::string value;  // bytes, least significant first
  std::string mask;   // as long as `value`; bits that are 1 are compared
  bool masked;        // the script contains the mask
};

// The most bits of a captured IR that a script can compare, because probes return no more.
constexpr int kMostCapturedIrBits = 16;

// The operations that run, in the order of their first runs. `pins` or `jtag` is empty. If the
// script has errors, some operations may be missing.
struct Plan {
  std::vector<PinOperation> pins;
  std::vector<JtagOperation> jtag;
  std::vector<Expectation> expectations;  // sorted by operation
  long operations = 0;                    // the number in a whole run, with repeated blocks
  bool resets_tap = false;                // "# reset TAP" asks for a reset before the first scan

  // Returns the expectation for a part of an operation, or null.
  const Expectation* Expected(std::size_t operation, Expectation::Of of) const;
};

// Return the sum and the product, or the largest number if the result does not fit.
long SaturatedSum(long one, long other);
long SaturatedProduct(long one, long other);

// The value that an operation has read, either in one run or in all its runs together.
struct Capture {
  std::string value;   // the first value read; bytes, least significant first
  std::string steady;  // as long as `value`; a bit is 1 if it was reported and never changed
};

// The values read, by the operation's index in the plan and the part that was read.
using Captures = std::map<std::pair<std::size_t, Expectation::Of>, Capture>;

// Returns whether every bit in the mask was reported, is as expected, and never changed.
bool IsMet(const Expectation& expectation, const Capture& captured);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_PLAN_H_
