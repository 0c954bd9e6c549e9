// What is told of a run while it goes on.
#ifndef ICESCRIPT_HOST_REPORTER_H_
#define ICESCRIPT_HOST_REPORTER_H_

#include <string>
#include <vector>

#include "host/progress.h"
#include "host/record/events.h"

namespace icehost {

// icehost's own words, a line on standard error.
void Complain(std::string what);

// Tells the user, and all who listen, what happens. Each line makes room for itself: the line of
// progress is erased before it.
class Reporter {
 public:
  // `listeners` must outlive the reporter.
  Reporter(const std::vector<EventListener*>& listeners, bool show_progress)
      : listeners_(listeners), progress_(show_progress) {}

  void BeginScript(const std::string& script);
  void EndScript(bool ran);
  void CountOperation() { progress_.OnOperation(); }
  // A message of the plug-in's, as it stands: some are pieces of a line. Throws IoError where
  // standard output takes no more, since the rest of the script is not to run unseen.
  void Show(const char* message);
  // Why a call or a script failed, in icehost's words.
  void Say(const std::string& what);
  // Ends with standard output written out; throws as Show.
  void Flush();
  // Erases the line of progress for the last time.
  void Close() { progress_.Erase(); }

  const std::string& LastMessage() const { return last_message_; }
  double Seconds() const { return progress_.Elapsed().count(); }

 private:
  const std::vector<EventListener*>& listeners_;
  Progress progress_;
  std::string last_message_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_REPORTER_H_
