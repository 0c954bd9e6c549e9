#include "host/check/plan.h"

#include <algorithm>
#include <limits>

namespace icehost {

long SaturatedSum(long one, long other) {
  long sum = 0;
  return __builtin_add_overflow(one, other, &sum) ? std::numeric_limits<long>::max() : sum;
}

long SaturatedProduct(long one, long other) {
  long product = 0;
  return __builtin_mul_overflow(one, other, &product) ? std::numeric_limits<long>::max() : product;
}

const Expectation* Plan::Expected(std::size_t operation, Expectation::Of of) const {
  auto at = std::lower_bound(
      expectations.begin(), expectations.end(), operation,
      [](const Expectation& one, std::size_t number) { return one.operation < number; });
  while (at != expectations.end() && at->operation == operation && at->of != of) ++at;
  return at != expectations.end() && at->operation == operation ? &*at : nullptr;
}

bool IsMet(const Expectation& expectation, const Capture& captured) {
  if (captured.value.size() < expectation.value.size()) return false;
  for (std::size_t i = 0; i < expectation.value.size(); ++i) {
    const int other = (captured.value[i] ^ expectation.value[i]) | ~captured.steady[i];
    if ((other & expectation.mask[i]) != 0) return false;
  }
  return true;
}

}  // namespace icehost
