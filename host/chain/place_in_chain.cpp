#include <fmt/format.h>

#include <numeric>
#include <string>

#include "host/chain/chain.h"
#include "host/system/errors.h"

namespace icehost {
namespace {

void RefuseUnsound(const Chain& chain) {
  if (!chain.faults.empty()) throw Unsupported(chain.faults.front());
}

}  // namespace

ChainPlace PlaceIn(const Chain& chain, std::size_t tap) {
  RefuseUnsound(chain);
  if (tap >= chain.taps.size()) {
    throw Unsupported(
        fmt::format("--tap {}: the chain has {}", tap + 1, CountedTaps(chain.taps.size())));
  }
  ChainPlace place{{}, tap};
  for (const ChainTap& one : chain.taps) {
    if (!one.ir_bits.has_value()) {
      throw Unsupported("the IR lengths of the chain are not certain: give them with --chain");
    }
    place.ir_lengths.push_back(*one.ir_bits);
  }
  return place;
}

void ConfirmPlace(const Chain& chain, const ChainPlace& place, int script_ir_bits) {
  RefuseUnsound(chain);
  const std::string found =
      fmt::format("{} with an IR of {} bits", CountedTaps(chain.taps.size()), *chain.ir_bits);
  if (place.ir_lengths.empty()) {
    if (script_ir_bits == 0 || script_ir_bits == chain.ir_bits) return;
    throw Unsupported(fmt::format("the chain has {}, and the script's IR {}{}", found,
                                  script_ir_bits,
                                  chain.taps.size() > 1 ? ": --tap says which TAP is meant" : ""));
  }
  bool same = place.ir_lengths.size() == chain.taps.size();
  for (std::size_t i = 0; same && i < chain.taps.size(); ++i) {
    same = chain.taps[i].ir_bits.value_or(place.ir_lengths[i]) == place.ir_lengths[i];
  }
  const int sum = std::accumulate(place.ir_lengths.begin(), place.ir_lengths.end(), 0);
  if (same && sum == chain.ir_bits) return;
  throw Unsupported(fmt::format("the chain is not that of --chain: it has {}", found));
}

}  // namespace icehost
