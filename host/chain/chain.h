// What is on a probe: a chain of TAPs.
#ifndef ICESCRIPT_HOST_CHAIN_CHAIN_H_
#define ICESCRIPT_HOST_CHAIN_CHAIN_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace icehost {

struct ChainTap {
  std::string name;                     // empty where nobody gave it one
  std::optional<std::uint32_t> idcode;  // none: a reset selects BYPASS
  std::optional<int> ir_bits;           // none: cannot be told
  // What is known of a chain that was declared before it was read.
  bool answered = true;      // else nothing above was read
  std::string manufacturer;  // by whoever read the IDCODE; may be empty
  std::string expected;      // IDCODEs; may be empty
};

struct Chain {
  std::vector<ChainTap> taps;      // the first is the nearest to TDO
  std::optional<int> ir_bits;      // of all of them, where it was measured
  std::vector<std::string> notes;  // what is to know besides
  // What is wrong, the gravest first. Without any the chain is sound, and holds one TAP or more.
  std::vector<std::string> faults;
};

// No chain is longer than this.
constexpr int kMostTaps = 64;

// Adds a fault for each IDCODE that is none.
void JudgeIdcodes(Chain& chain);
// "TAP 2", and its name in parentheses where it has one; counted from 0 here. Printable.
std::string TapTitle(const Chain& chain, std::size_t i);
// "1 TAP", "2 TAPs".
std::string CountedTaps(std::size_t taps);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHAIN_CHAIN_H_
