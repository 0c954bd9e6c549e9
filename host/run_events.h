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

// Passes all events of a run to the outputs, and then to the console. Each Notice names the script,
// and the call that it concerns, if there is one. In a repeated run, only the first round and the
// rounds that fail are passed on. A later round is passed on as a whole at its first error.
class RunEvents : public StepRecorder {
 public:
  // The arguments must outlive this object.
  RunEvents(Outputs& outputs, Console& console, const RunCommand& command);

  // Begins the run, and sets its start time.
  void BeginRun(RunBegin run);
  // Begins a round of a repeated run; the first one is 1.
  void BeginRound(long round);

  // Begins a script, and sets its time to now.
  void BeginScript(ScriptBegin script);
  // Reports that the current script asks for a TAP reset, and that the probe supports it.
  void RequestReset();
  // Reports that scripts address the TAP at `place`, which was read from the chain if `measured`.
  void SetPlace(const ChainPlace& place, bool measured);
  // Ends the current script, and sets its time to now.
  void EndScript(ScriptEnd end);
  // Returns the time since the run began.
  RunTime Now() const;
  bool InScript() const { return in_script_; }
  // Reports why the run ends. Does not use standard output, so a Rescue may call this function.
  void Abandon(const std::string& why);

  // Begins a host call. `begins_operation` is false if the call only prepares an operation. Throws
  // IoError if standard output can no longer be written, because nobody would see the script run.
  void BeginCall(const char* function, const CallSource& source, bool begins_operation);
  // Ends the current call, and sets its times.
  void EndCall(CallEvent call);
  // Must be called when the probe has answered the current call. Later errors do not name the call.
  void LeaveCall();
  // Passes on a message of the plug-in. Throws IoError as BeginCall does.
  void Message(const char* text);
  // Passes on the text that the plug-in itself wrote to standard output. Must be called after the
  // last call of a script. Throws IoError as BeginCall does.
  void Flush();

  // Reports why the current call failed, or why the script failed if there is no current call.
  void Fail(const std::string& why);
  // Warns, once in each script, that the current scan may not have reached a TAP, and explains why.
  // With --strict, throws Unsupported instead.
  void Doubt(const std::string& why);
  // Warns about a place in the script. Column 0 means the whole line.
  void Warn(Place place, const std::string& why);
  // Reports `what`, which concerns the script or the run.
  void Say(const std::string& what, Severity severity = Severity::kError);
  // Reports `what`, which concerns the whole run, to the outputs only. For use after all scripts.
  void Conclude(const std::string& what, Severity severity);
  // Reports `what`, which --quiet hides from the console.
  void Remark(const std::string& what, Severity severity);

  void BeginOperation(const std::string& name, const CallSource& source) override;
  void Record(const PinStep& step) override;

  // Returns whether a reason for a failure has been reported since the script began.
  bool Explained() const { return explained_; }
  const std::string& LastMessage() const { return last_message_; }  // from the plug-in

 private:
  void PassOnRound();
  std::string WithRound(const std::string& text) const;
  void Pass(const char* message);
  void PassCaptured();
  void SayAt(Place place, const std::string& what, Severity severity = Severity::kError);
  Notice Tell(Place place, const std::string& what, Severity severity);

  Outputs& outputs_;
  Console& console_;
  bool strict_;
  bool times_calls_;  // the probe is across a network
  RoundLog log_;
  long round_ = 0;  // 0 if the run is not repeated
  // The outputs; in a repeated run, only log_, which passes the events on to the outputs.
  std::vector<EventListener*> listeners_;
  std::vector<StepRecorder*> recorders_;
  std::string name_;
  bool in_script_ = false;
  bool parsing_ = false;            // the plug-in has not made a call yet
  const char* function_ = nullptr;  // the current call, or null
  CallSource source_;
  RunTime call_at_{0};
  RunTime answered_at_{0};
  bool explained_ = false;
  bool doubted_ = false;
  std::string last_message_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RUN_EVENTS_H_
