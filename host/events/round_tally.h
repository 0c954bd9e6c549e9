#ifndef ICESCRIPT_HOST_EVENTS_ROUND_TALLY_H_
#define ICESCRIPT_HOST_EVENTS_ROUND_TALLY_H_

#include <string>
#include <vector>

#include "host/check/plan.h"
#include "host/events/follower.h"

namespace icehost {

// Counts how often a script's expectations are met in any number of rounds, in constant memory.
class RoundTally {
 public:
  // Adds the results of one round of the script.
  void Add(const Follower& follower);
  // Returns a readable line for each expectation of the plan. `script` is the script's name.
  std::vector<std::string> Lines(const std::string& script, const Plan& plan) const;

 private:
  struct Tally {
    long met = 0;  // the number of rounds in which the expectation was met
    long unread = 0;
    std::vector<long> wrong;  // how often each bit was wrong
  };

  std::string Line(const Expectation& expectation, const Tally& tally) const;

  long rounds_ = 0;
  std::vector<Tally> tallies_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_ROUND_TALLY_H_
