// What a run has read.
#ifndef ICESCRIPT_HOST_CHECK_CAPTURES_H_
#define ICESCRIPT_HOST_CHECK_CAPTURES_H_

#include <cstddef>
#include <map>
#include <string>
#include <utility>

#include "host/check/plan.h"

namespace icehost {

// The values that one operation has read in all its runs.
struct Capture {
  std::string value;   // bytes, least significant first: the first one read
  std::string steady;  // as many; a bit that is 1 was the same each time
};

// By operation of the plan, and what of it was read.
using Captures = std::map<std::pair<std::size_t, Expectation::Of>, Capture>;

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_CAPTURES_H_
