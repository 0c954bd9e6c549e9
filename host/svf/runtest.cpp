#include "host/svf/runtest.h"

#include <fmt/format.h>

namespace icehost {
namespace {

constexpr const char* kForm =
    "expected RUNTEST [state] [count TCK] [time SEC [MAXIMUM time SEC]] [ENDSTATE state]";
constexpr const char* kStates =
    "a script stays in Run-Test/Idle: IDLE is the state, or RESET before the first scan";

// Walks over the words of one statement.
class Words {
 public:
  explicit Words(const SvfStatement& statement) : statement_(statement) {}

  bool AtEnd() const { return at_ == statement_.words.size(); }
  bool Is(const char* upper) const { return !AtEnd() && IsSvfWord(statement_.words[at_], upper); }
  bool Take(const char* upper) {
    const bool is = Is(upper);
    if (is) ++at_;
    return is;
  }
  std::optional<double> TakeNumber() {
    const auto number = AtEnd() ? std::nullopt : SvfNumber(statement_.words[at_]);
    if (number.has_value()) ++at_;
    return number;
  }
  // Of the next word, or of the statement where there is none.
  struct Place Place() const {
    return AtEnd() ? statement_.keyword.place : statement_.words[at_].place;
  }

 private:
  const SvfStatement& statement_;
  std::size_t at_ = 0;
};

struct Stay {
  double cycles = 0;
  double seconds = 0;
};

// A number with its unit, TCK or SEC, and whatever follows it up to the end state. Returns what is
// wrong where the next word is; null: nothing.
const char* TakeStay(Words& words, Stay& stay) {
  auto number = words.TakeNumber();
  if (!number.has_value()) return kForm;
  if (words.Is("SCK")) return "a script has no system clock SCK";
  if (words.Take("TCK")) {
    stay.cycles = *number;
    number = words.TakeNumber();
    if (!number.has_value()) return nullptr;
  }
  if (!words.Take("SEC")) return kForm;
  stay.seconds = *number;
  if (!words.Take("MAXIMUM")) return nullptr;
  return words.TakeNumber().has_value() && words.Take("SEC") ? nullptr : kForm;
}

std::string WhyTooLong(double cycles, double seconds) {
  return fmt::format(
      "a script cannot wait, and {} may matter: left out are up to {} TCK cycles and {} s between "
      "two scans",
      cycles > kMostIdleCycles ? fmt::format("{} TCK cycles", cycles)
                               : fmt::format("{} s", seconds),
      kMostIdleCycles, kMostIdleSeconds);
}

}  // namespace

SvfRunTest::Kind SvfRunTest::Take(const SvfStatement& statement, Problems& problems) {
  Words words(statement);
  const auto refuse = [&words, &problems](const char* why) {
    problems.Error(words.Place(), why);
    return Kind::kWrong;
  };
  Stay stay;
  if (words.Is("IRPAUSE") || words.Is("DRPAUSE")) return refuse(kStates);
  if (words.Take("IDLE")) run_ = end_ = State::kIdle;
  if (words.Take("RESET")) run_ = end_ = State::kReset;
  if (const char* const why = TakeStay(words, stay); why != nullptr) return refuse(why);
  if (words.Take("ENDSTATE")) {
    end_ = words.Is("RESET") ? State::kReset : State::kIdle;
    if (!words.Take("RESET") && !words.Take("IDLE")) return refuse(kStates);
  }
  if (!words.AtEnd()) return refuse(kForm);
  seconds_ += stay.seconds;
  if (!Idle(run_ == State::kIdle ? stay.cycles : 0, statement.keyword.place, problems)) {
    return Kind::kWrong;
  }
  return run_ == State::kReset || end_ == State::kReset ? Kind::kReset : Kind::kIdle;
}

bool SvfRunTest::Idle(double cycles, Place place, Problems& problems) {
  cycles_ += cycles;
  if (cycles_ <= kMostIdleCycles && seconds_ <= kMostIdleSeconds) return true;
  problems.Error(place, WhyTooLong(cycles_, seconds_));
  BeginScan();
  return false;
}

}  // namespace icehost
