#include "host/events/follower.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "entry/icescript.h"
#include "host/target/bits.h"
#include "host/target/wires.h"

namespace icehost {
namespace {

// Returns whether every bit that counts is as expected. A bit that the probe did not report is not.
bool IsMet(const Expectation& expectation, const std::string& captured) {
  if (captured.size() < expectation.value.size()) return false;
  for (std::size_t i = 0; i < expectation.value.size(); ++i) {
    if (((captured[i] ^ expectation.value[i]) & expectation.mask[i]) != 0) return false;
  }
  return true;
}

std::string MaskText(const Expectation& expectation) {
  return expectation.masked ? fmt::format(" (mask {})", ByteText(expectation.mask)) : "";
}

std::string CapturedText(const std::string& captured) {
  return captured.empty() ? "nothing, since this probe does not tell it" : ByteText(captured);
}

// The pins that are not as expected.
std::string PinText(const Expectation& expectation, const std::string& captured) {
  const int wrong = (captured[0] ^ expectation.value[0]) & expectation.mask[0];
  std::string text;
  for (int pin = 0; pin < kPinCount; ++pin) {
    if ((wrong >> pin & 1) == 0) continue;
    text += fmt::format("{} {} is {}", text.empty() ? ":" : ",", kPinNames[pin],
                        captured[0] >> pin & 1);
  }
  return text;
}

}  // namespace

void Follower::Begin(const Plan& plan) {
  plan_ = &plan;
  next_ = 0;
  block_begins_.clear();
  tallies_.assign(plan.expectations.size(), {});
  captures_.clear();
  unmet_ = 0;
}

CallSource Follower::NextOperation() {
  current_ = next_++;
  if (current_ >= plan_->jtag.size()) return {};
  const JtagOperation& operation = plan_->jtag[current_];
  const auto mask = [this](Expectation::Of of) {
    const Expectation* const expected = plan_->Expected(current_, of);
    return expected != nullptr ? &expected->mask : nullptr;
  };
  return {operation.line,  static_cast<int>(current_), &operation.section,
          operation.reads, mask(Expectation::Of::kIr), mask(Expectation::Of::kDr)};
}

CallSource Follower::NextPinOperation(const std::uint32_t& data) {
  current_ = NextPin(data);
  next_ = current_ + 1;
  if (current_ >= plan_->pins.size()) return {};
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
  const bool ir_met =
      Compare("ir_out", Expectation::Of::kIr, scan.ir.out.value_or(""), comparisons);
  const bool dr_met =
      Compare("dr_out", Expectation::Of::kDr, scan.dr.out.value_or(""), comparisons);
  return ir_met && dr_met;
}

bool Follower::ComparePins(int levels, std::vector<Comparison>& comparisons) {
  const std::string captured(1, static_cast<char>(levels & GPIO_PIN_ALL));
  return Compare("data", Expectation::Of::kPins, captured, comparisons);
}

bool Follower::Compare(const char* of, Expectation::Of which, const std::string& captured,
                       std::vector<Comparison>& comparisons) {
  if (mode_ == Mode::kLearn) {
    Keep(which, captured);
    return true;
  }
  const Expectation* const expected = plan_->Expected(current_, which);
  return expected == nullptr || CompareOne(of, *expected, captured, comparisons);
}

bool Follower::CompareOne(const char* of, const Expectation& expected, const std::string& captured,
                          std::vector<Comparison>& comparisons) {
  comparisons.push_back({of, expected.place.line, expected.place.column, ByteText(expected.value),
                         ByteText(expected.mask), captured.empty() ? "" : ByteText(captured), ""});
  Tally& tally = tallies_[static_cast<std::size_t>(&expected - plan_->expectations.data())];
  ++tally.compared;
  if (tally.unmet == 0) tally.captured = captured;
  if (IsMet(expected, captured)) return true;
  ++tally.unmet;
  ++unmet_;
  const bool pins = expected.of == Expectation::Of::kPins;
  comparisons.back().fault =
      fmt::format("expected {}, captured {}{}{}", ByteText(expected.value), CapturedText(captured),
                  MaskText(expected), pins ? PinText(expected, captured) : "");
  return mode_ == Mode::kKeepGoing;
}

void Follower::Keep(Expectation::Of of, const std::string& captured) {
  if (captured.empty()) return;
  const auto [at, is_new] = captures_.try_emplace(
      {current_, of}, Capture{captured, std::string(captured.size(), '\xFF')});
  if (is_new) return;
  Capture& capture = at->second;
  for (std::size_t i = 0; i < std::min(captured.size(), capture.value.size()); ++i) {
    capture.steady[i] = static_cast<char>(capture.steady[i] & ~(captured[i] ^ capture.value[i]));
  }
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
      line += fmt::format(", captured {}{}: {}", CapturedText(tally.captured), MaskText(expected),
                          tally.unmet == 0 ? "met" : "not met");
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
