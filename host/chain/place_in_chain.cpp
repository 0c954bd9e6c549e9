#include <fmt/format.h>

#include <numeric>
#include <vector>

#include "host/chain/chain.h"
#include "host/system/errors.h"

namespace icehost {
namespace {

void RefuseUnsound(const Chain& chain) {
  if (!chain.faults.empty()) throw Unsupported(chain.faults.front());
}

// Returns whether the lowest bits of each captured IR are 01, as IEEE 1149.1 requires.
bool BeginsEach(const Bits& captured, const std::vector<int>& lengths) {
  std::size_t at = 0;
  for (const int length : lengths) {
    if (!captured[at] || captured[at + 1]) return false;
    at += static_cast<std::size_t>(length);
  }
  return true;
}

}  // namespace

ChainPlace PlaceIn(const Chain& chain, std::size_t tap) {
  RefuseUnsound(chain);
  if (tap >= chain.taps.size()) {
    throw Unsupported(
        fmt::format("--tap {}: the chain has only {}", tap + 1, CountedTaps(chain.taps.size())));
  }
  ChainPlace place{{}, tap};
  for (const ChainTap& one : chain.taps) {
    if (!one.ir_bits.has_value()) {
      throw Unsupported("the IR lengths of the chain are not certain: set them with --chain");
    }
    place.ir_lengths.push_back(*one.ir_bits);
  }
  return place;
}

ChainPlace ConfirmPlace(const Chain& chain, const ChainPlace& place) {
  RefuseUnsound(chain);
  if (place.ir_lengths.empty()) return {{*chain.ir_bits}, 0};
  const std::vector<int>& lengths = place.ir_lengths;
  const int sum = std::accumulate(lengths.begin(), lengths.end(), 0);
  if (lengths.size() != chain.taps.size() || sum != chain.ir_bits ||
      !BeginsEach(chain.captured_ir, lengths)) {
    throw Unsupported(
        fmt::format("the chain does not match --chain: it has {} with {} IR bits in total",
                    CountedTaps(chain.taps.size()), *chain.ir_bits));
  }
  return place;
}

}  // namespace icehost
