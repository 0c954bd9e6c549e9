// What is told of a run while it goes on.
#ifndef ICESCRIPT_HOST_REPORTER_H_
#define ICESCRIPT_HOST_REPORTER_H_

#include <string>
#include <vector>

#include "host/events/events.h"
#include "host/progress.h"
#include "host/system/standard_streams.h"
#include "host/work_lock.h"

namespace icehost {

// Tells the user, and all who listen, what happens. Each line makes room for itself: the line of
// progress is erased before it. What the plug-in writes to standard output itself is a message like
// the others.
class Reporter {
 public:
  struct Options {
    bool quiet;  // standard output stays empty
    bool show_progress;
  };

  // `listeners` and `work` must outlive the reporter. `work` is held but while the user is told
  // something, who may keep us waiting, and while the plug-in reads a script.
  Reporter(const std::vector<EventListener*>& listeners, WorkLock& work, const Options& options);

  // `name` is what messages call it.
  void BeginScript(const std::string& path, const std::string& name);
  void EndScript(bool ran);
  // Around the call of the plug-in.
  void EnterPlugin();
  void LeavePlugin() { work_.TakeUp(); }
  // To be called at every host call; whether an operation begins with it.
  void OnCall(bool begins_operation);
  // A message of the plug-in's, as it stands: some are pieces of a line. For a terminal without
  // control characters. Throws IoError where standard output takes no more, since the rest of the
  // script is not to run unseen.
  void Show(const char* message);
  // Shows the rest of what the plug-in had to say; throws as Show.
  void Flush();
  // Why a call or a script failed, in icehost's words.
  void Say(const std::string& what);
  // Likewise, of a place in the script; a line of 0 is none, and so is a column.
  void SayAt(int line, int column, const std::string& what);
  // The last words of a run whose main thread does not come back, from the one that took over: does
  // not touch standard output.
  void Abandon(const std::string& what);
  // Erases the line of progress for the last time.
  void Close() { progress_.Erase(); }

  const std::string& LastMessage() const { return last_message_; }
  double Seconds() const { return progress_.Elapsed().count(); }

 private:
  void Pass(const char* message);
  void Write(const char* message);
  void ShowCaptured();
  void SayLine(const std::string& what, int line, const std::string& shown);

  const std::vector<EventListener*>& listeners_;
  WorkLock& work_;
  Progress progress_;
  CapturedOutput output_;
  bool quiet_;
  bool terminal_;
  bool shared_;            // standard output and standard error are one
  bool mid_line_ = false;  // the last message has no line feed
  std::string name_;
  bool in_script_ = false;
  bool parsing_ = false;  // when the plug-in may write to standard output itself
  std::string last_message_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_REPORTER_H_
