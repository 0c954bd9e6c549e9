// Follows the plug-in through a script's plan.
#ifndef ICESCRIPT_HOST_EVENTS_FOLLOWER_H_
#define ICESCRIPT_HOST_EVENTS_FOLLOWER_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/check/plan.h"
#include "host/events/call_guide.h"

namespace icehost {

// Knows which operation is under way, compares what it reads with what the script expects, and
// keeps what was read.
class Follower : public CallGuide {
 public:
  // What becomes of a value that is not the expected one.
  enum class Mode { kFail, kKeepGoing, kLearn };
  // Told of each such value, with its place in the script.
  using Tell = std::function<void(Place place, const std::string& what)>;

  Follower(Mode mode, Tell tell) : mode_(mode), tell_(std::move(tell)) {}

  // A script begins; the plan must outlive its run.
  void Begin(const Plan& plan);

  CallSource NextOperation() override;
  CallSource NextPinOperation(const std::uint32_t& data) override;
  bool CompareScan(const std::uint8_t* ir, int ir_bits, const std::uint8_t* dr, int dr_bits,
                   std::vector<Comparison>& comparisons) override;
  bool ComparePins(std::uint32_t levels, std::vector<Comparison>& comparisons) override;

  // How often a value was not the expected one, in this script.
  long Unmet() const { return unmet_; }
  // How many of the values that this script expects were not read at all.
  long Unread() const;
  // What has become of each expectation of this script, a line each: for people. Nothing was
  // compared in order to learn.
  std::vector<std::string> Summary(const std::string& script) const;
  const Captures& Read() const { return captures_; }

 private:
  // Of one expectation.
  struct Tally {
    long compared = 0;
    long unmet = 0;
    std::string captured;  // the first that was not as expected, or else the last
  };

  std::size_t NextPin(const std::uint32_t& data);
  bool Compare(const char* of, Expectation::Of which, const std::string& captured,
               std::vector<Comparison>& comparisons);
  bool CompareOne(const char* of, const Expectation& expected, const std::string& captured,
                  std::vector<Comparison>& comparisons);
  void Keep(Expectation::Of of, const std::string& captured);

  Mode mode_;
  Tell tell_;
  const Plan* plan_ = nullptr;
  std::size_t next_ = 0;     // the operation behind the one under way
  std::size_t current_ = 0;  // the operation under way
  // The first operations of the blocks that were entered, by their data words.
  std::unordered_map<const std::uint32_t*, std::size_t> block_begins_;
  std::vector<Tally> tallies_;  // as the plan's expectations
  Captures captures_;
  long unmet_ = 0;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_FOLLOWER_H_
