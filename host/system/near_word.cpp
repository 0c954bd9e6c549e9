#include "host/system/near_word.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace icehost {

std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i);
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t change = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = std::exchange(row[j], std::min({change, row[j] + 1, row[j - 1] + 1}));
    }
  }
  return row[b.size()];
}

std::string DidYouMean(const std::string& word, const std::vector<std::string>& known) {
  const std::string* nearest = nullptr;
  std::size_t least = std::min(kNear + 1, word.size());  // not all of it is a slip
  for (const std::string& candidate : known) {
    const std::size_t distance = EditDistance(word, candidate);
    if (distance >= least) continue;
    least = distance;
    nearest = &candidate;
  }
  return nearest != nullptr ? fmt::format(" (did you mean {}?)", *nearest) : "";
}

}  // namespace icehost
