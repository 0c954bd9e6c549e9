#include "host/check/plan.h"

#include <algorithm>

namespace icehost {

const Expectation* Plan::Expected(std::size_t operation, Expectation::Of of) const {
  auto at = std::lower_bound(
      expectations.begin(), expectations.end(), operation,
      [](const Expectation& one, std::size_t number) { return one.operation < number; });
  while (at != expectations.end() && at->operation == operation && at->of != of) ++at;
  return at != expectations.end() && at->operation == operation ? &*at : nullptr;
}

}  // namespace icehost
