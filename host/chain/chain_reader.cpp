#include "host/chain/chain_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "host/probe/pin_probe.h"

namespace icehost {
namespace {

// The reader shifts in this marker first and then searches the output for it. No TAP can produce
// it, because it begins like an IDCODE with a reserved manufacturer code.
constexpr std::uint64_t kMarker = 0x9C3A'51E7'2B64'D0FF;
constexpr std::size_t kMarkerBits = 64;
// The first read allows for only this many TAPs, because a simulator may need 1 ms per bit.
constexpr int kFewTaps = 4;
// The limit for all IRs together: kLongestIr bits, or kLongestIrEach per TAP if that is more.
constexpr std::size_t kLongestIr = 256;
constexpr std::size_t kLongestIrEach = 64;
// The maximum number of combinations of IR lengths that a report shows.
constexpr std::size_t kWaysShown = 4;

// Repeats the marker to fill `bits` bits. A stuck TDO cannot look like an echo of it.
Bits Markers(std::size_t bits) {
  Bits markers = BitsOfNumber(kMarker, kMarkerBits);
  while (markers.size() < bits) markers.push_back(markers[markers.size() - kMarkerBits]);
  return markers;
}

Bits MarkedBits(std::size_t ones) {
  Bits bits = BitsOfNumber(kMarker, kMarkerBits);
  bits.insert(bits.end(), ones, true);
  return bits;
}

// Returns how many bits `out` lags behind `in`, or nothing if the whole marker is not in `out`.
std::optional<std::size_t> LengthBetween(const Bits& in, const Bits& out) {
  for (std::size_t at = 0; at + kMarkerBits <= out.size(); ++at) {
    const auto echo = out.begin() + static_cast<std::ptrdiff_t>(at);
    if (std::equal(echo, out.end(), in.begin())) return at;
  }
  return std::nullopt;
}

// Returns the number of equal bits at the end of `bits`.
std::size_t TailOf(const Bits& bits) {
  const auto other = std::find(bits.rbegin(), bits.rend(), !bits.back());
  return static_cast<std::size_t>(other - bits.rbegin());
}

// Returns up to `most` combinations of IR lengths that fit the `captured` bits of `taps` TAPs. In
// each, the TAP nearest to TDO is first. IEEE 1149.1 requires each IR to shift out 1 and then 0.
std::vector<std::vector<int>> IrLengths(const Bits& captured, std::size_t taps, std::size_t most) {
  std::vector<int> beginnings;
  for (std::size_t i = 0; i + 1 < captured.size(); ++i) {
    if (captured[i] && !captured[i + 1]) beginnings.push_back(static_cast<int>(i));
  }
  if (taps == 0 || beginnings.size() < taps || beginnings.front() != 0) return {};
  // Tries every choice of positions at which the IRs after the first IR may begin.
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

class ChainReader {
 public:
  explicit ChainReader(PinPort& port) : port_(port), walker_(port) {}

  Chain Read() {
    if (ReadIdcodes() && ReadIrs()) CountBypasses();
    JudgeIdcodes(chain_);
    walker_.ResetTap();
    port_.Flush();
    return std::move(chain_);
  }

 private:
  enum class From { kReset, kHere };

  // Each of these functions returns whether the next one can run.
  bool ReadIdcodes();
  bool ReadIrs();

  void CountBypasses();

  std::optional<Bits> ReadTwice(From from, TapState shift, const Bits& in, const char* what);
  void TakeTaps(const Bits& out, std::size_t begin_below, std::size_t end);
  void TakeIr(const Bits& captured);
  void ExplainEndless(const Bits& out);
  bool Fail(std::string why);

  PinPort& port_;
  TapWalker walker_;
  Chain chain_;
};

bool ChainReader::Fail(std::string why) {
  chain_.faults.push_back(std::move(why));
  return false;
}

std::optional<Bits> ChainReader::ReadTwice(From from, TapState shift, const Bits& in,
                                           const char* what) {
  const auto read = [&] {
    if (from == From::kReset) walker_.ResetTap();
    walker_.Scan(shift, in);
    return port_.CollectTdo();
  };
  Bits first = read();
  const Bits second = read();
  if (first == second) return first;
  const auto differs = std::mismatch(first.begin(), first.end(), second.begin()).first;
  Fail(
      fmt::format("the signals are not stable: two readings of {} first differ in bit {} (TDO "
                  "floats, TCK is too fast, or ground is not connected)",
                  what, differs - first.begin()));
  return std::nullopt;
}

// After a reset, each TAP shifts out its IDCODE, which begins with a 1, or a single 0 from BYPASS.
bool ChainReader::ReadIdcodes() {
  Bits out;
  for (const int taps : {kFewTaps, kMostTaps}) {
    const Bits in = Markers(static_cast<std::size_t>(taps * kIdcodeBits) + kMarkerBits);
    const auto read = ReadTwice(From::kReset, TapState::kShiftDr, in, "the IDCODEs");
    if (!read.has_value()) return false;
    out = *read;
    const auto end = LengthBetween(in, out);
    if (!end.has_value()) continue;
    TakeTaps(out, *end, *end);
    if (*end == 0) Fail("no TAP: TDO repeats TDI without delay (TDI and TDO are connected)");
    return !chain_.taps.empty();
  }
  ExplainEndless(out);
  return false;
}

// Adds the TAPs whose answers begin before bit `begin_below`. An answer must not extend past `end`.
void ChainReader::TakeTaps(const Bits& out, std::size_t begin_below, std::size_t end) {
  for (std::size_t at = 0; at < begin_below && chain_.taps.size() < kMostTaps;) {
    ChainTap tap;
    const std::size_t bits = out[at] ? kIdcodeBits : 1;
    if (at + bits > end) {
      Fail(fmt::format("the last IDCODE of the chain has only {} of 32 bits", end - at));
      return;
    }
    if (out[at]) tap.idcode = static_cast<std::uint32_t>(NumberOfBits(Slice(out, at, at + bits)));
    chain_.taps.push_back(tap);
    at += bits;
  }
}

void ChainReader::ExplainEndless(const Bits& out) {
  const std::size_t tail = TailOf(out);
  if (tail == out.size()) {
    Fail(
        out.back()
            ? "nothing answers: TDO is all ones (it is stuck high, or the target is not powered or "
              "not connected)"
            : "nothing answers: TDO is all zeros (it is shorted to ground, or the target is "
              "held in reset or not powered)");
  } else if (tail > kMarkerBits) {
    Fail(fmt::format(
        "the chain is broken: after the bits of the TAPs that answer, TDO is all {} (TDI is not "
        "connected, or the chain is interrupted)",
        out.back() ? "ones" : "zeros"));
    // An IDCODE that begins before the tail may extend into it.
    TakeTaps(out, out.size() - tail, out.size());
  } else {
    Fail(
        fmt::format("the chain has no end: the pattern on TDI does not appear on TDO within {} "
                    "bits (the chain has more than {} TAPs, or is broken)",
                    out.size() - kMarkerBits, kMostTaps));
  }
}

// The ones that follow the marker remain in the IRs and select BYPASS in every TAP.
bool ChainReader::ReadIrs() {
  const std::size_t most = std::max(kLongestIr, kLongestIrEach * chain_.taps.size());
  const Bits in = MarkedBits(most);
  const auto out = ReadTwice(From::kReset, TapState::kShiftIr, in, "the IRs");
  if (!out.has_value()) return false;
  const auto length = LengthBetween(in, *out);
  if (!length.has_value()) {
    return Fail(
        fmt::format("the IR has no end: the pattern on TDI does not appear on TDO within {} bits "
                    "(the IR is longer, or the chain is broken)",
                    most));
  }
  chain_.ir_bits = static_cast<int>(*length);
  TakeIr(Slice(*out, 0, *length));
  return true;
}

void ChainReader::TakeIr(const Bits& captured) {
  chain_.captured_ir = captured;
  const std::size_t taps = chain_.taps.size();
  if (taps == 1) chain_.taps[0].ir_bits = chain_.ir_bits;
  const auto ways = IrLengths(captured, taps, kWaysShown + 1);
  if (ways.empty()) {
    Fail(
        fmt::format("the captured IR of {} bits does not fit {}: the lowest bits of each IR must "
                    "be 01 (IEEE 1149.1)",
                    captured.size(), CountedTaps(taps)));
  } else if (ways.size() == 1) {
    for (std::size_t i = 0; i < taps; ++i) chain_.taps[i].ir_bits = ways[0][i];
  } else {
    std::vector<std::string> shown;
    shown.reserve(ways.size());
    for (const auto& way : ways) shown.push_back(fmt::format("{}", fmt::join(way, "+")));
    if (ways.size() > kWaysShown) shown.back() = "...";
    chain_.notes.push_back(
        fmt::format("the IR lengths of the TAPs are uncertain: {}", fmt::join(shown, " or ")));
  }
}

void ChainReader::CountBypasses() {
  const Bits in = MarkedBits(kMostTaps);
  const auto out = ReadTwice(From::kHere, TapState::kShiftDr, in, "BYPASS");
  if (!out.has_value()) return;
  const std::size_t taps = chain_.taps.size();
  const auto length = LengthBetween(in, *out);
  if (length != taps) {
    const std::string bits = length.has_value() ? fmt::to_string(*length) : "more than 64";
    Fail(fmt::format("{} answered after the reset, but in BYPASS the chain has {} bits",
                     CountedTaps(taps), bits));
  } else if (Slice(*out, 0, taps) != Bits(taps)) {
    Fail("a TAP in BYPASS answered with 1, not 0");
  }
}

}  // namespace

Chain ReadChain(PinPort& port) {
  return ChainReader(port).Read();
}

}  // namespace icehost
