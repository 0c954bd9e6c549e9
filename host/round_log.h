// Lets through what happens in the rounds that the outputs of a repeated run hold.
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

// Passes on the first round. Keeps each later round until PassOn, or until the next one begins,
// which drops it. So the outputs of a run without end get the first round and those that fail, up
// to 1000. They see steps that are numbered without gaps.
class RoundLog : public EventListener, public StepRecorder {
 public:
  // The outputs must outlive this object. What a ScriptBegin and a CallSource point at must stay
  // valid until the next round begins.
  RoundLog(std::vector<EventListener*> listeners, std::vector<StepRecorder*> recorders)
      : listeners_(std::move(listeners)), recorders_(std::move(recorders)) {}

  // A round begins; the first one is 1.
  void BeginRound(long round);
  // The round under way fails: passes on all of it, what follows too. If it was too long to keep,
  // its calls and steps so far are missing, and a warning reports that; so does one in the last
  // round that the outputs get. `now` is their time.
  void PassOn(RunTime now);

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
  // Something to pass on later; all but what frames the scripts are details.
  struct Kept {
    std::function<void()> pass;
    bool detail;
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
  void Warn(const char* what, RunTime now);
  StepRange Renumbered(const StepRange& steps) const;

  std::vector<EventListener*> listeners_;
  std::vector<StepRecorder*> recorders_;
  long round_ = 0;
  int failed_rounds_ = 0;  // passed on, without the first round
  bool open_ = true;
  bool cut_ = false;  // the details of this round were too many to keep
  std::deque<Kept> kept_;
  std::size_t kept_bytes_ = 0;
  std::size_t steps_ = 0;          // recorded, in all rounds
  std::size_t kept_steps_ = 0;     // in kept_
  std::size_t dropped_steps_ = 0;  // in all rounds
  std::size_t resumed_at_ = 0;     // the first of these steps that follows the last dropped one
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_ROUND_LOG_H_
