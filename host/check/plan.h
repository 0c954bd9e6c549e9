// What the plug-in does with a script, what the script expects of it, and what a run has read.
#ifndef ICESCRIPT_HOST_CHECK_PLAN_H_
#define ICESCRIPT_HOST_CHECK_PLAN_H_

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/check/problems.h"

namespace icehost {

// One pin operation, in one word: a script may have millions.
struct PinOperation {
  unsigned line : 30;
  unsigned begins_block : 1;  // it follows a REPT
  unsigned ends_block : 1;    // an ENDR follows it
};

// One operation of a JTAG script.
struct JtagOperation {
  int line;  // of the value that says what is done: DR, CDI or RESET
  std::string section;
  bool reads = false;
  int ir_line = 0;  // of a scan
};

// A value that is to be read.
struct Expectation {
  enum class Of { kIr, kDr, kPins };

  std::size_t operation;  // in the plan
  Of of;
  Place place;        // of the value
  std::string value;  // bytes, least significant first
  std::string mask;   // as many; a bit that is 1 counts
  bool masked;        // the script says so itself
};

// How many bits of a captured IR a script can compare: more are not handed out.
constexpr int kMostCapturedIrBits = 16;

// The operations in the order in which they are first met; of a script with errors those that run
// all the same. One of the two lists is empty.
struct Plan {
  std::vector<PinOperation> pins;
  std::vector<JtagOperation> jtag;
  std::vector<Expectation> expectations;  // by operation
  long operations = 0;      // that a run of it makes: each as often as its blocks repeat it
  bool resets_tap = false;  // before the first scan, by "# reset TAP"

  // The value that is expected of an operation, or null.
  const Expectation* Expected(std::size_t operation, Expectation::Of of) const;
};

// A result that does not fit is the largest number.
long SaturatedSum(long one, long other);
long SaturatedProduct(long one, long other);

// The value that one run of an operation has read, or the values of all its runs.
struct Capture {
  std::string value;   // bytes, least significant first: the first one read
  std::string steady;  // as many; a bit that is 1 was reported, and was the same each time
};

// By operation of the plan, and the part of it that was read.
using Captures = std::map<std::pair<std::size_t, Expectation::Of>, Capture>;

// Returns whether every bit that counts is as expected. A bit that was not reported, or that was
// not the same each time, is not.
bool IsMet(const Expectation& expectation, const Capture& captured);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_PLAN_H_
