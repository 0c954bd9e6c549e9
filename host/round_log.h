#ifndef ICESCRIPT_HOST_ROUND_LOG_H_
#define ICESCRIPT_HOST_ROUND_LOG_H_

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "host/events/events.h"
#include "host/pins/recording_port.h"

namespace icehost {

// Passes on the first round of a repeated run at once. Keeps each later round until PassOn is
// called, and drops it if the next round begins first. So the outputs of an endless run receive the
// first round and up to 1000 rounds that failed, with steps that are numbered without gaps.
class RoundLog : public EventListener, public StepRecorder {
 public:
  // The outputs must outlive this object. Objects that a ScriptBegin or a CallSource points to must
  // exist until the next round begins.
  RoundLog(std::vector<EventListener*> listeners, std::vector<StepRecorder*> recorders)
      : listeners_(std::move(listeners)), recorders_(std::move(recorders)) {}

  // Begins a round; the first one is 1.
  void BeginRound(long round);
  // Passes on the current round, which has failed: its events so far, and from now on its later
  // events. If the round was too long to keep, a warning replaces its calls and steps so far. In
  // the 1000th round passed on this way, a warning says that later rounds are not passed on. `now`
  // is the time of the warnings. Returns them, for the user.
  std::vector<std::string> PassOn(RunTime now);

  void OnScript(const ScriptBegin& script) override;
  void OnResetRequest() override;
  void OnPlace(const ChainPlace& place) override;
  void OnCall(const CallEvent& call) override;
  void OnMessage(const char* text) override;
  void OnNotice(const Notice& notice) override;
  void OnScriptEnd(const ScriptEnd& end) override;

  void BeginOperation(const std::string& name, const CallSource& source) override;
  void Record(const PinStep& step) override;

 private:
  struct Kept {
    std::function<void()> pass;
    bool detail;  // a call, message, notice or step
  };

  template <class... Parameters, class... Arguments>
  void Tell(void (EventListener::*event)(Parameters...), const Arguments&... arguments) {
    for (EventListener* const listener : listeners_) (listener->*event)(arguments...);
  }
  template <class Pass>
  void Frame(const Pass& pass);
  template <class Pass>
  void Detail(std::size_t bytes, const Pass& pass);
  void DropDetails();
  StepRange Renumbered(const StepRange& steps) const;

  std::vector<EventListener*> listeners_;
  std::vector<StepRecorder*> recorders_;
  long round_ = 0;
  int failed_rounds_ = 0;  // rounds after the first that were passed on
  bool open_ = true;       // events are passed on at once
  bool cut_ = false;       // the current round has too many details to keep
  std::deque<Kept> kept_;
  std::size_t kept_bytes_ = 0;
  std::size_t steps_ = 0;          // the number recorded, in all rounds
  std::size_t kept_steps_ = 0;     // in kept_
  std::size_t dropped_steps_ = 0;  // the number dropped, in all rounds
  std::size_t resumed_at_ = 0;     // the first step after the last dropped one
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_ROUND_LOG_H_
