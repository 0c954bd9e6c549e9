// The one place that everything in a run goes through.
#ifndef ICESCRIPT_HOST_RUN_EVENTS_H_
#define ICESCRIPT_HOST_RUN_EVENTS_H_

#include <string>
#include <vector>

#include "host/check/problems.h"
#include "host/console.h"
#include "host/events/events.h"
#include "host/options/commands.h"
#include "host/pins/recording_port.h"
#include "host/round_log.h"
#include "host/tables/outputs.h"

namespace icehost {

// Passes what happens to the outputs and the console, in this order. Messages and errors belong to
// the script that is under way, and errors also to its call. Of a repeated run they get the first
// round and those that fail: what speaks of a failure passes on its whole round.
class RunEvents : public StepRecorder {
 public:
  // All must outlive this object. With --strict a doubt fails the call.
  RunEvents(Outputs& outputs, Console& console, const RunCommand& command);

  // Fills in when the run began.
  void BeginRun(RunBegin run);
  // A round of a repeated run begins, from 1.
  void BeginRound(long round);

  // A script begins, now.
  void BeginScript(ScriptBegin script);
  // The script under way asks for a TAP reset, which the probe does.
  void RequestReset();
  // Scripts address the TAP at this place; `measured`: it was read from the chain.
  void SetPlace(const ChainPlace& place, bool measured);
  // A script ends, now.
  void EndScript(ScriptEnd end);
  // Since the run began.
  RunTime Now() const;
  // Whether a script is under way.
  bool InScript() const { return in_script_; }
  // Reports why the run ends here, for a main thread that is stuck. Leaves the console's standard
  // output alone: the main thread may hold it.
  void Abandon(const std::string& why);

  // The plug-in makes a call; it may be the first or the only one of an operation. Throws IoError
  // if the user's standard output takes no more, so that the rest of the script does not run
  // unseen.
  void BeginCall(const char* function, const CallSource& source, bool begins_operation);
  void EndCall(CallEvent call);
  // The call under way has a result.
  void LeaveCall();
  // A message of the plug-in's. Throws IoError as above.
  void Message(const char* text);
  // The plug-in makes no more calls in this script. Passes on what it has written to standard
  // output itself; throws IoError as above.
  void Flush();

  // Why the call under way failed, or else the script.
  void Fail(const std::string& why);
  // Why the scan of the call under way may have reached no TAP: a warning, once in each script.
  // Throws Unsupported if doubts are failures.
  void Doubt(const std::string& why);
  // Warns of something at a place of the script; a column of 0 means its whole line.
  void Warn(Place place, const std::string& why);
  // Reports something about the script or the run.
  void Say(const std::string& what, Severity severity = Severity::kError);
  // Reports something about the whole run, to the outputs only, after its last script.
  void Conclude(const std::string& what, Severity severity);
  // Reports something that --quiet hides from the console.
  void Remark(const std::string& what, Severity severity);

  void BeginOperation(const std::string& name, const CallSource& source) override;
  void Record(const PinStep& step) override;

  // Whether a reason for failing has been given since the script began.
  bool Explained() const { return explained_; }
  const std::string& LastMessage() const { return last_message_; }

 private:
  void PassOnRound();
  std::string WithRound(const std::string& text) const;
  void Pass(const char* message);
  void PassCaptured();
  // Reports something about a place of the script; a line or column of 0 means there is none.
  void SayAt(Place place, const std::string& what, Severity severity = Severity::kError);
  // Returns what was reported.
  Notice Tell(Place place, const std::string& what, Severity severity);

  Outputs& outputs_;
  Console& console_;
  bool strict_;
  bool times_calls_;  // the probe is across a network
  RoundLog log_;
  long round_ = 0;  // 0: the run is not repeated
  // The outputs, or the log of the rounds before them.
  std::vector<EventListener*> listeners_;
  std::vector<StepRecorder*> recorders_;
  std::string name_;
  bool in_script_ = false;
  bool parsing_ = false;            // the plug-in has not made a call yet
  const char* function_ = nullptr;  // of the call under way; null: there is none
  CallSource source_;
  RunTime call_at_{0};
  RunTime answered_at_{0};
  bool explained_ = false;
  bool doubted_ = false;
  std::string last_message_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RUN_EVENTS_H_
