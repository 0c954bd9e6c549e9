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

// Follows the plug-in through the plan of a script, and compares or stores the values read.
//
// After the last line of a REPT block, the script either repeats the block or leaves it, and the
// arguments of the next call do not show which. But each line has its own data word, whose address
// the plug-in passes. When a block begins, the follower notes the address of its first line. If the
// call after a block passes a noted address, the script has gone back to that line.
class Follower {
 public:
  // If a value is not as expected, the call fails (kFail), or the run continues (kKeepGoing).
  // kLearn stores all values and compares none.
  enum class Mode { kFail, kKeepGoing, kLearn };

  // The results of comparing one expectation.
  struct Tally {
    long compared = 0;
    long unmet = 0;
    Capture captured;         // the first wrong value; the last value if none was wrong
    std::vector<long> wrong;  // how often each bit was wrong; zeros at the end may be missing
  };

  explicit Follower(Mode mode) : mode_(mode) {}

  // Begins a script. The plan must exist until the next Begin.
  void Begin(const Plan& plan);

  // Begins the next operation of a JTAG script. Returns its place in the script.
  CallSource NextOperation();
  // Notes that the plug-in has made the call that performs the current operation of a JTAG script.
  void Perform();
  // Begins a pin operation in the same way. `data` is its data word, which identifies its line.
  CallSource NextPinOperation(const std::uint32_t& data);

  // Compares the values that the scan read with the expected values, and appends the comparisons.
  // Returns whether the call succeeds.
  bool CompareScan(const Scan& scan, std::vector<Comparison>& comparisons);
  // Compares pins (GPIO_PIN_ bits) in the same way. The probe reports only the pins in `reported`.
  bool ComparePins(int levels, int reported, std::vector<Comparison>& comparisons);

  // The following functions describe the script so far. In Mode::kLearn, Values counts nothing, and
  // FirstUnread and Summary return nothing.

  // Returns how many comparisons found a wrong value.
  long Unmet() const { return unmet_; }
  // Returns the number of comparisons.
  long Compared() const;
  // Returns the number of expected values that were never read.
  long Unread() const;
  // Counts the expected values by their results.
  ValueCounts Values() const;
  // Returns the first 1000 expected values that were never read.
  std::vector<const Expectation*> FirstUnread() const;
  // Returns the number of operations from the first that was not performed to the end of the plan.
  std::size_t Unreached() const;
  // Returns whether the plug-in made more calls than the plan has operations.
  bool Exceeded() const { return exceeded_; }
  // Returns a readable line for each expectation; `script` is the script's name.
  std::vector<std::string> Summary(const std::string& script) const;
  // Return a tally for each expectation of the plan, and the values that Mode::kLearn stores.
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
  std::size_t next_ = 0;       // the operation after the current one
  std::size_t current_ = 0;    // the current operation
  std::size_t performed_ = 0;  // how many operations were performed, up to the first gap
  // The first operation of each block that was entered, by the address of its data word.
  std::unordered_map<const std::uint32_t*, std::size_t> block_begins_;
  std::vector<Tally> tallies_;
  Captures captures_;
  long unmet_ = 0;
  bool exceeded_ = false;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_FOLLOWER_H_
