// How often a script's expectations were met in a repeated run.
#ifndef ICESCRIPT_HOST_EVENTS_ROUND_TALLY_H_
#define ICESCRIPT_HOST_EVENTS_ROUND_TALLY_H_

#include <string>
#include <vector>

#include "host/check/plan.h"
#include "host/events/follower.h"

namespace icehost {

// Keeps counts only: its memory does not grow with the rounds.
class RoundTally {
 public:
  // The script has ended in one more round, which the follower has followed.
  void Add(const Follower& follower);
  // A line for each expectation of the plan, for people.
  std::vector<std::string> Lines(const std::string& script, const Plan& plan) const;

 private:
  struct Tally {
    long met = 0;  // rounds
    long unread = 0;
    std::vector<long> wrong;  // comparisons, by bit
  };

  std::string Line(const Expectation& expectation, const Tally& tally) const;

  long rounds_ = 0;
  std::vector<Tally> tallies_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_ROUND_TALLY_H_
