#include "host/target/chain_place.h"

#include <numeric>

namespace icehost {
namespace {

std::size_t BitsOfTaps(TapColumn column, const std::vector<int>& ir_lengths, std::size_t first,
                       std::size_t end) {
  if (column == TapColumn::kDr) return end - first;
  const auto begin = ir_lengths.begin();
  return static_cast<std::size_t>(std::accumulate(begin + static_cast<std::ptrdiff_t>(first),
                                                  begin + static_cast<std::ptrdiff_t>(end), 0));
}

}  // namespace

std::size_t ChainPlace::Before(TapColumn column) const {
  return BitsOfTaps(column, ir_lengths, 0, ir_lengths.empty() ? 0 : tap);
}

std::size_t ChainPlace::After(TapColumn column) const {
  return ir_lengths.empty() ? 0 : BitsOfTaps(column, ir_lengths, tap + 1, ir_lengths.size());
}

Bits ChainPlace::Whole(TapColumn column, const Bits& own) const {
  const bool fill = column == TapColumn::kIr;
  Bits whole(Before(column), fill);
  whole.insert(whole.end(), own.begin(), own.end());
  whole.insert(whole.end(), After(column), fill);
  return whole;
}

Bits ChainPlace::Own(TapColumn column, const Bits& whole) const {
  return Slice(whole, Before(column), whole.size() - After(column));
}

}  // namespace icehost
