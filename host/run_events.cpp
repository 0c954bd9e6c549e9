#include "host/run_events.h"

#include <fmt/format.h>

#include <utility>

#include "host/system/errors.h"
#include "host/system/standard_streams.h"

namespace icehost {

RunEvents::RunEvents(Outputs& outputs, Console& console, bool strict, bool repeats)
    : outputs_(outputs),
      console_(console),
      strict_(strict),
      log_(outputs.listeners, outputs.recorders),
      listeners_(outputs.listeners),
      recorders_(outputs.recorders) {
  if (repeats && !listeners_.empty()) listeners_ = {&log_};
  if (repeats && !recorders_.empty()) recorders_ = {&log_};
}

void RunEvents::BeginRound(long round) {
  round_ = round;
  log_.BeginRound(round);
  console_.Hold(round > 1);
}

void RunEvents::PassOnRound() {
  if (round_ == 0) return;
  log_.PassOn();
  console_.Release();
}

void RunEvents::BeginScript(const RunScript& script, const std::vector<SourceMark>& marks) {
  for (EventListener* const listener : listeners_) {
    listener->OnSource(script.name, script.content, marks);
    listener->OnScript(script.path);
  }
  name_ = script.name;
  in_script_ = true;
  parsing_ = true;
  function_ = nullptr;
  source_ = {};
  explained_ = false;
  doubted_ = false;
}

void RunEvents::RequestReset() {
  for (EventListener* const listener : listeners_) listener->OnResetRequest();
}

void RunEvents::SetPlace(const ChainPlace& place, bool measured) {
  for (EventListener* const listener : listeners_) listener->OnPlace(place);
  if (!measured) return;
  Remark(fmt::format("measured: --chain {} --tap {}", fmt::join(place.ir_lengths, ","),
                     place.tap + 1));
}

void RunEvents::EndScript(bool ran) {
  in_script_ = false;
  for (EventListener* const listener : listeners_) listener->OnScriptEnd(ran);
}

void RunEvents::Abandon(const std::string& why) {
  if (round_ != 0) log_.PassOn();
  for (EventListener* const listener : listeners_) listener->OnError(why, 0);
  if (in_script_) EndScript(false);
  console_.Close();
  Complain(WithRound(why));
}

void RunEvents::BeginCall(const char* function, const CallSource& source, bool begins_operation) {
  source_ = source;
  // The user sees what the reading of the script printed before anything is played.
  if (std::exchange(parsing_, false)) PassCaptured();
  if (begins_operation) console_.CountOperation();
  outputs_.ThrowIfCut();
  function_ = function;
}

void RunEvents::EndCall(const CallEvent& call) {
  for (const Comparison& one : call.comparisons) {
    if (one.fault.empty()) continue;
    PassOnRound();
    SayAt(one.line, one.column, one.fault);
    explained_ = true;
  }
  for (EventListener* const listener : listeners_) listener->OnCall(call);
}

void RunEvents::Message(const char* text) {
  if (parsing_) PassCaptured();
  Pass(text);
}

void RunEvents::Flush() {
  PassCaptured();
  console_.Flush();
}

void RunEvents::Pass(const char* message) {
  for (EventListener* const listener : listeners_) listener->OnMessage(message);
  last_message_ = message;
  console_.Show(message);
}

void RunEvents::PassCaptured() {
  const std::string text = console_.TakeCaptured();
  if (!text.empty()) Pass(text.c_str());
}

void RunEvents::Fail(const std::string& why) {
  explained_ = true;
  if (function_ == nullptr) return Say(why);
  PassOnRound();
  SayAt(source_.line, 0, fmt::format("{} failed: {}", function_, why));
}

void RunEvents::Doubt(const std::string& why) {
  if (strict_) throw Unsupported(why);
  if (!std::exchange(doubted_, true)) Warn({source_.line, 0}, why);
}

void RunEvents::Warn(Place place, const std::string& why) {
  SayAt(place.line, place.column, "warning: " + why);
}

void RunEvents::SayAt(int line, int column, const std::string& what) {
  if (line == 0) return Error(what, 0, "icehost: " + what);
  std::string text = fmt::format("{}:{}:", name_, line);
  if (column != 0) text += fmt::format("{}:", column);
  text.append(" ").append(what);
  Error(text, line, text);
}

void RunEvents::Say(const std::string& what) {
  PassOnRound();
  Error(what, 0, "icehost: " + what);
}

void RunEvents::Remark(const std::string& what) {
  Tell(what, 0);
  console_.SayUnlessQuiet("icehost: " + what);
}

void RunEvents::Tell(const std::string& what, int line) {
  for (EventListener* const listener : listeners_) listener->OnError(what, line);
}

void RunEvents::Error(const std::string& what, int line, const std::string& shown) {
  Tell(what, line);
  console_.Say(WithRound(shown));
}

std::string RunEvents::WithRound(const std::string& text) const {
  return round_ == 0 ? text : fmt::format("{} (round {})", text, round_);
}

void RunEvents::BeginOperation(const std::string& name, const CallSource& source) {
  for (StepRecorder* const recorder : recorders_) recorder->BeginOperation(name, source);
}

void RunEvents::Record(const PinStep& step) {
  for (StepRecorder* const recorder : recorders_) recorder->Record(step);
}

}  // namespace icehost
