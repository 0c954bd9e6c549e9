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

// Keeps track of the current operation, and compares the values read with the expected values or
// stores them.
//
// The call after the last line of a REPT block either repeats the block or leaves it, and its
// arguments do not show which. But each line has its own data word, and the plug-in passes its
// address. The follower notes the address of a block's first line when the block is entered. If
// the call after a block's last line passes a noted address, the script has gone back to that line;
// otherwise it has gone on to the next one.
class Follower {
 public:
  // If a value is not as expected, the call fails (kFail), or the run goes on (kKeepGoing). With
  // kLearn nothing is compared, and all values are stored.
  enum class Mode { kFail, kKeepGoing, kLearn };

  // The comparisons of one expectation.
  struct Tally {
    long compared = 0;
    long unmet = 0;
    Capture captured;         // the first wrong value; the last value if none was wrong
    std::vector<long> wrong;  // how often each bit was wrong; later bits never were
  };

  explicit Follower(Mode mode) : mode_(mode) {}

  // Begins a script. The plan must outlive its run.
  void Begin(const Plan& plan);

  // Begins the next operation of a JTAG script. Returns its place in the script.
  CallSource NextOperation();
  // Begins a pin operation. `data` is its data word, which identifies its line.
  CallSource NextPinOperation(const std::uint32_t& data);

  // Compares the values that the operation read with the expected values, and appends the
  // comparisons. Returns whether the call succeeds. A scan has no captured IR if the probe does not
  // report it.
  bool CompareScan(const Scan& scan, std::vector<Comparison>& comparisons);
  // Does the same for pins. `reported` are the pins whose levels the probe reports.
  bool ComparePins(int levels, int reported, std::vector<Comparison>& comparisons);

  // Returns how often a value of this script was not as expected.
  long Unmet() const { return unmet_; }
  // Returns how often a value of this script was compared.
  long Compared() const;
  // Returns how many expected values of this script were never read.
  long Unread() const;
  // Counts the expected values of this script by their results; all counts are 0 in Mode::kLearn.
  ValueCounts Values() const;
  // Returns the first 1000 expected values that were never read; none in Mode::kLearn.
  std::vector<const Expectation*> FirstUnread() const;
  // Returns how many operations at the end of this script did not begin.
  std::size_t Unreached() const;
  // Returns whether operations began that this script does not have.
  bool Exceeded() const { return exceeded_; }
  // Returns a readable line for each expectation of this script; none in Mode::kLearn.
  std::vector<std::string> Summary(const std::string& script) const;
  // Returns a tally for each expectation of the plan.
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
  std::size_t next_ = 0;     // the operation after the current one
  std::size_t current_ = 0;  // the current operation
  // The first operation of each block that was entered, by the address of its data word.
  std::unordered_map<const std::uint32_t*, std::size_t> block_begins_;
  std::vector<Tally> tallies_;
  Captures captures_;
  long unmet_ = 0;
  bool exceeded_ = false;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_FOLLOWER_H_
