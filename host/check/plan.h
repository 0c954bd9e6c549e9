// What the plug-in does with a script and what the script expects of it, with the places where it
// says so.
#ifndef ICESCRIPT_HOST_CHECK_PLAN_H_
#define ICESCRIPT_HOST_CHECK_PLAN_H_

#include <cstddef>
#include <string>
#include <vector>

#include "host/check/script_text.h"

namespace icehost {

// One pin operation, in one word: a script may have millions.
struct PinOperation {
  unsigned line : 30;
  unsigned begins_block : 1;  // a REPT stands before it
  unsigned ends_block : 1;    // an ENDR stands behind it
};

// One operation of a JTAG script.
struct JtagOperation {
  int line;  // of the value that says what is done: DR, CDI or RESET
  std::string section;
  bool reads = false;
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

// The operations in the order in which they are first met; of a script with errors those that run
// all the same. One of the two is empty.
struct Plan {
  std::vector<PinOperation> pins;
  std::vector<JtagOperation> jtag;
  std::vector<Expectation> expectations;  // by operation

  // What is expected of an operation, or null.
  const Expectation* Expected(std::size_t operation, Expectation::Of of) const;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_PLAN_H_
