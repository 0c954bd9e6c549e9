// The totals of a run, and its result as a text, as the head of a page and as an event.
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
  // The arguments must outlive this object. Scripts may be added until the first round begins.
  RunTotals(const RunCommand& command, std::vector<Script>& scripts, const ObservedProbe& probe,
            const Console& console)
      : command_(command), scripts_(scripts), probe_(probe), console_(console) {}

  void BeginRound();
  // Begins the next script of the round, and returns its index.
  std::size_t BeginScript();
  // Ends the current script, and counts the values that `follower` compared.
  void EndScript(const Follower& follower);
  // Makes Text include the expectations of the script that ended last, with their results. In a
  // repeated run, does nothing if the status is kInterrupted.
  void Summarize(const Follower& follower, ExitStatus status);
  // Ends the round. Does not count it as played if the status is kInterrupted.
  void EndRound(ExitStatus status);

  // Returns whether fewer rounds have begun than the user asked for.
  bool WantsRound() const { return command_.repeat == 0 || round_ < command_.repeat; }
  long Round() const { return round_; }
  // Returns the number of operations in all rounds if nothing fails; 0 for an endless run.
  long ExpectedOperations() const;
  // Returns the beginning of a progress line: "round 3 of 10, 0 failed, ".
  std::string RoundText() const;
  // Returns the text to print at the end of the run; empty if the options ask for none.
  std::string Text() const;
  PageHead Head(ExitStatus status) const;
  // Returns the last event of a run that ends at the time `at`.
  RunEnd EndOf(ExitStatus status, RunTime at);

 private:
  void CountUnplayed();  // counts the values of the scripts that did not begin in this round
  std::string RoundCounts() const;
  std::string Counts() const;

  const RunCommand& command_;
  std::vector<Script>& scripts_;
  const ObservedProbe& probe_;
  const Console& console_;
  std::size_t begun_ = 0;   // the number of scripts that began in at least one round
  std::size_t ended_ = 0;   // the number of scripts that ended in the current round
  long round_ = 0;          // the current round
  long played_rounds_ = 0;  // the number of rounds played to their ends
  long failed_rounds_ = 0;  // the number of played rounds that failed
  ValueCounts values_;      // of all scripts that ended or were left out, in all rounds
  std::string summary_;     // the results of the expectations
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RUN_TOTALS_H_
