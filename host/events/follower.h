// Follows the plug-in through a script's plan.
#ifndef ICESCRIPT_HOST_EVENTS_FOLLOWER_H_
#define ICESCRIPT_HOST_EVENTS_FOLLOWER_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/check/plan.h"
#include "host/events/events.h"

namespace icehost {

// Knows which operation is under way, compares the values read with those that the script expects,
// and keeps the values read.
//
// The call after the last line of a REPT block either repeats the block or leaves it, and its
// arguments do not show which. But each line has a data word of its own, and the plug-in passes its
// address. The follower notes the address of a block's first line when the block is entered. If
// the call after a block's last line has a noted address, the script has gone back to that line;
// otherwise it has gone on to the next one.
class Follower {
 public:
  // What happens after a value that is not the expected one: the call fails, or the run goes on; or
  // nothing is compared, and all values are kept.
  enum class Mode { kFail, kKeepGoing, kLearn };

  // The comparisons of one expectation.
  struct Tally {
    long compared = 0;
    long unmet = 0;
    Capture captured;         // the first that was not as expected, or else the last
    std::vector<long> wrong;  // how often each bit was not; no longer than needed
  };

  explicit Follower(Mode mode) : mode_(mode) {}

  // A script begins; the plan must outlive its run.
  void Begin(const Plan& plan);

  // The next operation of a JTAG script begins. Returns where it comes from.
  CallSource NextOperation();
  // A pin operation begins, and `data` is its own data word.
  CallSource NextPinOperation(const std::uint32_t& data);

  // Compares the values that the operation read with those that the script expects, and appends the
  // comparisons. Returns whether the call succeeds. A scan without a captured IR comes from a probe
  // that does not report it.
  bool CompareScan(const Scan& scan, std::vector<Comparison>& comparisons);
  // `reported`: the pins whose levels the probe reports.
  bool ComparePins(int levels, int reported, std::vector<Comparison>& comparisons);

  // How often a value was not the expected one, in this script.
  long Unmet() const { return unmet_; }
  // How often a value was compared with the expected one, in this script.
  long Compared() const;
  // How many of the values that this script expects were not read at all.
  long Unread() const;
  // What became of the values that this script expects; none are counted in Mode::kLearn.
  ValueCounts Values() const;
  // The first values that were not read, as many as a record names; none in Mode::kLearn.
  std::vector<const Expectation*> FirstUnread() const;
  // How many operations of this script, counted from its end, did not begin.
  std::size_t Unreached() const;
  // Whether operations began that this script does not have.
  bool Exceeded() const { return exceeded_; }
  // The result of each expectation of this script, a line each, for people; empty in Mode::kLearn.
  std::vector<std::string> Summary(const std::string& script) const;
  // One for each expectation of this script's plan.
  const std::vector<Tally>& Tallies() const { return tallies_; }
  const Captures& Read() const { return captures_; }

 private:
  std::size_t NextPin(const std::uint32_t& data);
  bool CompareRegister(const char* of, Expectation::Of which, const ScanRegister& captured,
                       std::vector<Comparison>& comparisons);
  bool Compare(const char* of, Expectation::Of which, const Capture& captured,
               std::vector<Comparison>& comparisons);
  bool CompareOne(const char* of, const Expectation& expected, const Capture& captured,
                  std::vector<Comparison>& comparisons);
  void Keep(Expectation::Of of, const Capture& captured);

  Mode mode_;
  const Plan* plan_ = nullptr;
  std::size_t next_ = 0;     // the operation after the one under way
  std::size_t current_ = 0;  // the operation under way
  // The first operations of the blocks that were entered, by the addresses of their data words.
  std::unordered_map<const std::uint32_t*, std::size_t> block_begins_;
  std::vector<Tally> tallies_;
  Captures captures_;
  long unmet_ = 0;
  bool exceeded_ = false;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_FOLLOWER_H_
