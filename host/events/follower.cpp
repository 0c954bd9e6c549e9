#include "host/events/follower.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "entry/icescript.h"
#include "host/check/gpio_items.h"
#include "host/target/bits.h"
#include "host/target/wires.h"

namespace icehost {
namespace {

// The maximum number of wrong bits, or of ranges of wrong bits, that a message names.
constexpr std::size_t kMostNamed = 4;
// The maximum number of values that FirstUnread returns.
constexpr std::size_t kMostUnread = 1000;

// Returns the numbers of the wrong bits. Bit 0 is the least significant bit.
std::vector<std::size_t> WrongBits(const Expectation& expectation, const Capture& captured) {
  std::vector<std::size_t> bits;
  const std::size_t bytes = std::min(captured.value.size(), expectation.value.size());
  for (std::size_t bit = 0; bit < 8 * bytes; ++bit) {
    const std::size_t i = bit / 8;
    const int wrong = (captured.value[i] ^ expectation.value[i]) & captured.steady[i];
    if (((wrong & expectation.mask[i]) >> bit % 8 & 1) != 0) bits.push_back(bit);
  }
  return bits;
}

void CountBits(const std::vector<std::size_t>& bits, std::vector<long>& counts) {
  for (const std::size_t bit : bits) {
    if (counts.size() <= bit) counts.resize(bit + 1);
    ++counts[bit];
  }
}

std::string MaskText(const Expectation& expectation) {
  return expectation.masked ? fmt::format(" (mask {})", ByteText(expectation.mask)) : "";
}

std::string CapturedText(const Expectation& expectation, const Capture& captured) {
  if (captured.value.empty()) return "nothing (this probe does not report the value)";
  std::string text = ByteText(captured.value);
  const int unreported = expectation.mask[0] & ~captured.steady[0];
  if (expectation.of == Expectation::Of::kPins && unreported != 0) {
    text += fmt::format(" (this probe does not report {})", PinNames(unreported));
  }
  return text;
}

// Returns a text such as "bit 2 is 1, bit 66 is 0" or "NRST is 0".
std::string LevelsText(const std::vector<std::size_t>& bits, const std::string& value, bool pins) {
  std::vector<std::string> texts;
  texts.reserve(bits.size());
  for (const std::size_t bit : bits) {
    texts.push_back(fmt::format("{} is {}", pins ? kPinNames[bit] : fmt::format("bit {}", bit),
                                value[bit / 8] >> bit % 8 & 1));
  }
  return fmt::format("{}", fmt::join(texts, ", "));
}

// Returns a text such as "bits 0-7, 9, 16-31 are wrong".
std::string RangesText(const std::vector<std::size_t>& bits) {
  std::vector<std::string> ranges;
  std::size_t at = 0;
  while (at < bits.size() && ranges.size() < kMostNamed) {
    std::size_t end = at + 1;
    while (end < bits.size() && bits[end] == bits[end - 1] + 1) ++end;
    const std::string last = end - at == 1 ? "" : fmt::format("-{}", bits[end - 1]);
    ranges.push_back(fmt::format("{}{}", bits[at], last));
    at = end;
  }
  const std::string more = at < bits.size() ? fmt::format(" and {} more", bits.size() - at) : "";
  return fmt::format("bits {}{} are wrong", fmt::join(ranges, ", "), more);
}

// Returns a colon and a description of the wrong bits, or an empty text if there are none.
std::string WrongText(const std::vector<std::size_t>& bits, const std::string& value, bool pins) {
  if (bits.empty()) return "";
  return ": " +
         (pins || bits.size() <= kMostNamed ? LevelsText(bits, value, pins) : RangesText(bits));
}

}  // namespace

void Follower::Begin(const Plan& plan) {
  plan_ = &plan;
  next_ = current_ = performed_ = 0;
  block_begins_.clear();
  tallies_.assign(plan.expectations.size(), {});
  captures_.clear();
  unmet_ = 0;
  exceeded_ = false;
}

CallSource Follower::NextOperation() {
  current_ = next_++;
  if (current_ >= plan_->jtag.size()) {
    exceeded_ = true;
    return {};
  }
  const JtagOperation& operation = plan_->jtag[current_];
  const auto mask = [this](Expectation::Of of) {
    const Expectation* const expected = plan_->Expected(current_, of);
    return expected != nullptr ? &expected->mask : nullptr;
  };
  return {operation.line,  static_cast<int>(current_), &operation.section,
          operation.reads, mask(Expectation::Of::kIr), mask(Expectation::Of::kDr)};
}

void Follower::Perform() {
  exceeded_ |= current_ < performed_ || current_ >= plan_->jtag.size();
  if (current_ == performed_) ++performed_;
}

CallSource Follower::NextPinOperation(const std::uint32_t& data) {
  current_ = NextPin(data);
  next_ = current_ + 1;
  if (current_ >= plan_->pins.size()) {
    exceeded_ = true;
    return {};
  }
  if (current_ == performed_) ++performed_;
  CallSource source;
  source.line = static_cast<int>(plan_->pins[current_].line);
  return source;
}

std::size_t Follower::NextPin(const std::uint32_t& data) {
  std::size_t next = next_;
  if (next > 0 && next <= plan_->pins.size() && plan_->pins[next - 1].ends_block != 0) {
    const auto begin = block_begins_.find(&data);
    if (begin != block_begins_.end()) return begin->second;
  }
  if (next < plan_->pins.size() && plan_->pins[next].begins_block != 0) block_begins_[&data] = next;
  return next;
}

bool Follower::CompareScan(const Scan& scan, std::vector<Comparison>& comparisons) {
  const bool ir_met = CompareRegister("ir_out", Expectation::Of::kIr, scan.ir, comparisons);
  const bool dr_met = CompareRegister("dr_out", Expectation::Of::kDr, scan.dr, comparisons);
  return ir_met && dr_met;
}

bool Follower::CompareRegister(const char* of, Expectation::Of which, const ScanRegister& captured,
                               std::vector<Comparison>& comparisons) {
  const std::string bytes = captured.out.value_or("");
  return Compare(of, which, {bytes, std::string(bytes.size(), '\xFF')}, comparisons);
}

bool Follower::ComparePins(int levels, int reported, std::vector<Comparison>& comparisons) {
  const Capture captured = {std::string(1, static_cast<char>(levels & reported & GPIO_PIN_ALL)),
                            std::string(1, static_cast<char>(reported))};
  return Compare("data", Expectation::Of::kPins, captured, comparisons);
}

bool Follower::Compare(const char* of, Expectation::Of which, const Capture& captured,
                       std::vector<Comparison>& comparisons) {
  if (mode_ == Mode::kLearn) {
    Keep(which, captured);
    return true;
  }
  const Expectation* const expected = plan_->Expected(current_, which);
  return expected == nullptr || CompareOne(of, *expected, captured, comparisons);
}

bool Follower::CompareOne(const char* of, const Expectation& expected, const Capture& captured,
                          std::vector<Comparison>& comparisons) {
  comparisons.push_back({of,
                         expected.place.line,
                         expected.place.column,
                         ByteText(expected.value),
                         ByteText(expected.mask),
                         captured.value.empty() ? "" : ByteText(captured.value),
                         "",
                         {}});
  Tally& tally = tallies_[static_cast<std::size_t>(&expected - plan_->expectations.data())];
  ++tally.compared;
  if (tally.unmet == 0) tally.captured = captured;
  if (IsMet(expected, captured)) return true;
  Comparison& comparison = comparisons.back();
  comparison.wrong_bits = WrongBits(expected, captured);
  CountBits(comparison.wrong_bits, tally.wrong);
  ++tally.unmet;
  ++unmet_;
  const bool pins = expected.of == Expectation::Of::kPins;
  const std::string section = pins ? "" : fmt::format("[{}] ", plan_->jtag[current_].section);
  comparison.fault =
      fmt::format("{}expected {}, captured {}{}{}", section, ByteText(expected.value),
                  CapturedText(expected, captured), MaskText(expected),
                  WrongText(comparison.wrong_bits, captured.value, pins));
  return mode_ == Mode::kKeepGoing;
}

void Follower::Keep(Expectation::Of of, const Capture& captured) {
  if (captured.value.empty()) return;
  const Expectation* const expected = plan_->Expected(current_, of);
  const bool pins = of == Expectation::Of::kPins;
  if (pins && expected != nullptr && (expected->mask[0] & ~captured.steady[0]) != 0) return;
  const auto [at, is_new] = captures_.try_emplace({current_, of}, captured);
  if (is_new) return;
  Capture& all = at->second;
  for (std::size_t i = 0; i < std::min(captured.value.size(), all.value.size()); ++i) {
    all.steady[i] = static_cast<char>(all.steady[i] & ~(captured.value[i] ^ all.value[i]));
  }
}

long Follower::Compared() const {
  long compared = 0;
  for (const Tally& tally : tallies_) compared += tally.compared;
  return compared;
}

long Follower::Unread() const {
  long unread = 0;
  for (std::size_t i = 0; i < tallies_.size(); ++i) {
    const Expectation& expected = plan_->expectations[i];
    const bool kept = captures_.count({expected.operation, expected.of}) > 0;
    if (tallies_[i].compared == 0 && !kept) ++unread;
  }
  return unread;
}

ValueCounts Follower::Values() const {
  ValueCounts counts;
  if (mode_ == Mode::kLearn) return counts;
  for (const Tally& tally : tallies_) {
    long& count = tally.unmet > 0 ? counts.unmet : tally.compared > 0 ? counts.met : counts.unread;
    ++count;
  }
  return counts;
}

std::vector<const Expectation*> Follower::FirstUnread() const {
  std::vector<const Expectation*> unread;
  if (mode_ == Mode::kLearn) return unread;
  for (std::size_t i = 0; i < tallies_.size() && unread.size() < kMostUnread; ++i) {
    if (tallies_[i].compared == 0) unread.push_back(&plan_->expectations[i]);
  }
  return unread;
}

std::size_t Follower::Unreached() const {
  const std::size_t operations = std::max(plan_->pins.size(), plan_->jtag.size());
  return operations - std::min(performed_, operations);
}

std::vector<std::string> Follower::Summary(const std::string& script) const {
  std::vector<std::string> lines;
  if (mode_ == Mode::kLearn) return lines;
  for (std::size_t i = 0; i < tallies_.size(); ++i) {
    const Expectation& expected = plan_->expectations[i];
    const Tally& tally = tallies_[i];
    std::string line = fmt::format("{}:{}:{}: expected {}", script, expected.place.line,
                                   expected.place.column, ByteText(expected.value));
    if (tally.compared == 0) {
      line += ": not read";
    } else {
      line += fmt::format(", captured {}{}: {}", CapturedText(expected, tally.captured),
                          MaskText(expected), tally.unmet == 0 ? "met" : "not met");
      if (tally.compared > 1) {
        line += fmt::format(" ({} of {} times)", tally.unmet == 0 ? tally.compared : tally.unmet,
                            tally.compared);
      }
    }
    lines.push_back(std::move(line));
  }
  return lines;
}

}  // namespace icehost
