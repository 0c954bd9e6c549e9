#include "host/chain/ir_lengths.h"

#include <algorithm>

namespace icehost {
namespace {

// Where an IR may begin.
std::vector<int> Beginnings(const Bits& captured) {
  std::vector<int> beginnings;
  for (std::size_t i = 0; i + 1 < captured.size(); ++i) {
    if (captured[i] && !captured[i + 1]) beginnings.push_back(static_cast<int>(i));
  }
  return beginnings;
}

}  // namespace

std::vector<std::vector<int>> IrLengths(const Bits& captured, std::size_t taps, std::size_t most) {
  const std::vector<int> beginnings = Beginnings(captured);
  if (taps == 0 || beginnings.size() < taps || beginnings.front() != 0) return {};
  // Each choice of those behind the first.
  Bits chosen(beginnings.size() - 1);
  std::fill_n(chosen.begin(), taps - 1, true);
  std::vector<std::vector<int>> ways;
  do {
    std::vector<int> lengths;
    int begin = 0;
    for (std::size_t i = 0; i < chosen.size(); ++i) {
      if (chosen[i]) lengths.push_back(beginnings[i + 1] - begin);
      if (chosen[i]) begin = beginnings[i + 1];
    }
    lengths.push_back(static_cast<int>(captured.size()) - begin);
    ways.push_back(lengths);
  } while (ways.size() < most && std::prev_permutation(chosen.begin(), chosen.end()));
  return ways;
}

}  // namespace icehost
