#include "host/run_totals.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "host/check/plan.h"
#include "host/tables/outputs.h"

namespace icehost {
namespace {

const char* ResultText(ExitStatus status) {
  switch (status) {
    case kAllWell:
      return "passed";
    case kInterrupted:
      return "interrupted";
    case kNotOpened:
      return "aborted";
    default:
      return "failed";
  }
}

}  // namespace

void RunTotals::BeginRound() {
  ++round_;
  ended_ = 0;
}

std::size_t RunTotals::BeginScript() {
  begun_ = std::max(begun_, ended_ + 1);
  return ended_;
}

void RunTotals::EndScript(const Follower& follower) {
  values_ = values_ + follower.Values();
  ++ended_;
}

void RunTotals::Summarize(const Follower& follower, ExitStatus status) {
  Script& script = scripts_[ended_ - 1];
  if (command_.Repeats()) {
    if (status != kInterrupted) script.rounds.Add(follower);
  } else if (command_.summary) {
    for (const std::string& line : follower.Summary(script.name)) summary_ += line + '\n';
  }
}

void RunTotals::EndRound(ExitStatus status) {
  if (status == kInterrupted) return;
  ++played_rounds_;
  if (status != kAllWell) ++failed_rounds_;
}

void RunTotals::CountUnplayed() {
  for (; ended_ < scripts_.size(); ++ended_) {
    if (command_.learn.empty()) {
      values_.unread += static_cast<long>(scripts_[ended_].plan.expectations.size());
    }
  }
}

RunEnd RunTotals::EndOf(ExitStatus status, RunTime at) {
  CountUnplayed();
  RunEnd end = {status,
                ResultText(status),
                probe_.Counts(),
                probe_.TckCycles(),
                values_,
                begun_,
                {},
                failed_rounds_,
                at};
  if (command_.Repeats()) end.rounds = played_rounds_;
  return end;
}

PageHead RunTotals::Head(ExitStatus status) const {
  const auto& scripts = command_.scripts;
  const auto rest = scripts.begin() + static_cast<std::ptrdiff_t>(begun_);
  PageHead head = {fmt::format("{}", fmt::join(scripts, ", ")), ResultText(status),
                   status == kAllWell, HeadEntries(command_.probe, Counts(), console_.Seconds())};
  head.entries.emplace_back("Plug-in", command_.plugin);
  if (command_.Repeats()) {
    head.entries.emplace_back(
        "Repeated", RoundCounts() + "; this page shows the first round and the failed rounds");
  } else {
    head.planned = ExpectedOperations();
  }
  if (rest != scripts.end()) {
    head.entries.emplace_back("Not run", fmt::format("{}", fmt::join(rest, scripts.end(), ", ")));
  }
  return head;
}

long RunTotals::ExpectedOperations() const {
  long operations = 0;
  for (const Script& script : scripts_) {
    operations = SaturatedSum(operations, script.plan.operations);
  }
  return SaturatedProduct(operations, command_.repeat);
}

std::string RunTotals::Text() const {
  if (!command_.summary && !(command_.Repeats() && command_.keep_going)) return "";
  std::string text = summary_;
  if (command_.Repeats()) {
    for (const Script& script : scripts_) {
      for (const std::string& line : script.rounds.Lines(script.name, script.plan)) {
        text += line + '\n';
      }
    }
    text += RoundCounts() + '\n';
  }
  return command_.summary ? text + Counts() + '\n' : text;
}

std::string RunTotals::RoundText() const {
  const std::string of = command_.repeat == 0 ? "" : fmt::format(" of {}", command_.repeat);
  return fmt::format("round {}{}, {} failed, ", round_, of, failed_rounds_);
}

std::string RunTotals::RoundCounts() const {
  return fmt::format("rounds: {}, failed: {}", played_rounds_, failed_rounds_);
}

std::string RunTotals::Counts() const {
  const RunCounts& counts = probe_.Counts();
  const std::optional<long> cycles = probe_.TckCycles();
  return fmt::format("operations: {}, TCK cycles: {}, bits shifted: {}, reads: {}, time: {:.3f} s",
                     counts.operations, cycles.has_value() ? std::to_string(*cycles) : "unknown",
                     counts.bits, counts.reads, console_.Seconds());
}

}  // namespace icehost
