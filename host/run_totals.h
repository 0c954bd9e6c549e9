// The totals of a run, and its result in the forms in which icehost reports it.
#ifndef ICESCRIPT_HOST_RUN_TOTALS_H_
#define ICESCRIPT_HOST_RUN_TOTALS_H_

#include <cstddef>
#include <string>
#include <vector>

#include "host/console.h"
#include "host/events/events.h"
#include "host/events/follower.h"
#include "host/events/output.h"
#include "host/observed_probe.h"
#include "host/options/commands.h"
#include "host/run_scripts.h"

namespace icehost {

class RunTotals {
 public:
  // All arguments must outlive this object. The scripts may be set later, before the first round.
  RunTotals(const RunCommand& command, std::vector<Script>& scripts, const ObservedProbe& probe,
            const Console& console)
      : command_(command), scripts_(scripts), probe_(probe), console_(console) {}

  void BeginRound();
  // A script of the round begins. Returns its index.
  std::size_t BeginScript();
  // The current script ends, with the values that `follower` compared.
  void EndScript(const Follower& follower);
  // Adds the results of the script's expectations to Text, except those of an interrupted round.
  void Summarize(const Follower& follower, ExitStatus status);
  // The round ends. It is not counted if it was interrupted.
  void EndRound(ExitStatus status);

  // Returns whether another round is wanted after rounds without failures.
  bool WantsRound() const { return command_.repeat == 0 || round_ < command_.repeat; }
  long Round() const { return round_; }
  // Returns how many operations all rounds make, if none fails.
  long ExpectedOperations() const;
  // Returns the beginning of a progress line: "round 3 of 10, 0 failed, ".
  std::string RoundText() const;
  // Returns the text that is printed at the end.
  std::string Text() const;
  PageHead Head(ExitStatus status) const;
  // Returns the last event, of a run that ends `at`.
  RunEnd EndOf(ExitStatus status, RunTime at);

 private:
  // Counts the values of the scripts that did not begin in this round.
  void CountUnplayed();
  std::string RoundCounts() const;
  std::string Counts() const;

  const RunCommand& command_;
  std::vector<Script>& scripts_;
  const ObservedProbe& probe_;
  const Console& console_;
  std::size_t begun_ = 0;   // scripts that began, in any round
  std::size_t ended_ = 0;   // scripts, in the current round
  long round_ = 0;          // the current one
  long played_rounds_ = 0;  // those played to their ends
  long failed_rounds_ = 0;  // of the rounds played
  ValueCounts values_;      // of all scripts that ended or were left out, in all rounds
  std::string summary_;     // the results of the expectations
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RUN_TOTALS_H_
