#include "host/events/round_tally.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <utility>

#include "host/target/wires.h"

namespace icehost {

void RoundTally::Add(const Follower& follower) {
  const std::vector<Follower::Tally>& round = follower.Tallies();
  ++rounds_;
  tallies_.resize(std::max(tallies_.size(), round.size()));
  for (std::size_t i = 0; i < round.size(); ++i) {
    Tally& all = tallies_[i];
    if (round[i].compared == 0) {
      ++all.unread;
    } else if (round[i].unmet == 0) {
      ++all.met;
    }
    const std::vector<long>& wrong = round[i].wrong;
    all.wrong.resize(std::max(all.wrong.size(), wrong.size()));
    for (std::size_t bit = 0; bit < wrong.size(); ++bit) all.wrong[bit] += wrong[bit];
  }
}

std::vector<std::string> RoundTally::Lines(const std::string& script, const Plan& plan) const {
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < tallies_.size(); ++i) {
    const Expectation& expectation = plan.expectations[i];
    lines.push_back(fmt::format("{}:{}:{}: {}", script, expectation.place.line,
                                expectation.place.column, Line(expectation, tallies_[i])));
  }
  return lines;
}

std::string RoundTally::Line(const Expectation& expectation, const Tally& tally) const {
  const bool pins = expectation.of == Expectation::Of::kPins;
  std::string text = fmt::format("expectation met in {} of {} rounds", tally.met, rounds_);
  if (tally.unread > 0) text += fmt::format(", not read in {}", tally.unread);
  const char* before = pins ? "; wrong pins: " : "; wrong bits: ";
  for (std::size_t bit = 0; bit < tally.wrong.size(); ++bit) {
    const long times = tally.wrong[bit];
    if (times == 0) continue;
    text += fmt::format("{}{} ({} time{})", std::exchange(before, ", "),
                        pins ? kPinNames[bit] : std::to_string(bit), times, times == 1 ? "" : "s");
  }
  return text;
}

}  // namespace icehost
