#include "host/run_events.h"

#include <fmt/format.h>

#include <utility>

#include "host/system/errors.h"
#include "host/system/standard_streams.h"

namespace icehost {

RunEvents::RunEvents(Outputs& outputs, Console& console, const RunCommand& command)
    : outputs_(outputs),
      console_(console),
      strict_(command.strict),
      times_calls_(!command.probe.kind->addresses.empty()),
      log_(outputs.listeners, outputs.recorders),
      listeners_(outputs.listeners),
      recorders_(outputs.recorders) {
  if (command.Repeats() && !listeners_.empty()) listeners_ = {&log_};
  if (command.Repeats() && !recorders_.empty()) recorders_ = {&log_};
}

void RunEvents::BeginRun(RunBegin run) {
  run.started = std::chrono::system_clock::now() - Now();
  for (EventListener* const listener : outputs_.listeners) listener->OnRunBegin(run);
}

void RunEvents::Conclude(const std::string& what, Severity severity) {
  const Notice notice = {severity, what, "", {0, 0}, {}, Now()};
  for (EventListener* const listener : outputs_.listeners) listener->OnNotice(notice);
}

void RunEvents::BeginRound(long round) {
  round_ = round;
  log_.BeginRound(round);
  console_.Hold(round > 1);
}

void RunEvents::PassOnRound() {
  const std::vector<std::string> warnings = log_.PassOn(Now());
  console_.Release();
  for (const std::string& warning : warnings) console_.Say("icehost: " + warning);
}

RunTime RunEvents::Now() const {
  return std::chrono::duration_cast<RunTime>(console_.Elapsed());
}

void RunEvents::BeginScript(ScriptBegin script) {
  script.at = Now();
  for (EventListener* const listener : listeners_) listener->OnScript(script);
  name_ = script.name;
  in_script_ = true;
  parsing_ = true;
  function_ = nullptr;
  source_ = {};
  explained_ = false;
  doubted_ = false;
  last_message_.clear();
}

void RunEvents::RequestReset() {
  for (EventListener* const listener : listeners_) listener->OnResetRequest();
}

void RunEvents::SetPlace(const ChainPlace& place, bool measured) {
  for (EventListener* const listener : listeners_) listener->OnPlace(place);
  if (!measured) return;
  Remark(fmt::format("the chain was measured: --chain {} --tap {}",
                     fmt::join(place.ir_lengths, ","), place.tap + 1),
         Severity::kNote);
}

void RunEvents::EndScript(ScriptEnd end) {
  in_script_ = false;
  end.at = Now();
  for (EventListener* const listener : listeners_) listener->OnScriptEnd(end);
}

void RunEvents::Abandon(const std::string& why) {
  const std::vector<std::string> warnings = log_.PassOn(Now());
  Tell({0, 0}, why, Severity::kError);
  console_.Close();
  for (const std::string& warning : warnings) Complain(warning);
  Complain(WithRound(why));
}

void RunEvents::BeginCall(const char* function, const CallSource& source, bool begins_operation) {
  source_ = source;
  if (!listeners_.empty()) call_at_ = Now();
  // Text that the plug-in printed while parsing the script must appear before the first operation.
  if (std::exchange(parsing_, false)) PassCaptured();
  if (begins_operation) console_.CountOperation();
  outputs_.ThrowIfCut();
  function_ = function;
}

void RunEvents::LeaveCall() {
  function_ = nullptr;
  if (times_calls_ && !listeners_.empty()) answered_at_ = Now();
}

void RunEvents::EndCall(CallEvent call) {
  call.at = call_at_;
  if (times_calls_) call.took = answered_at_ - call_at_;
  for (const Comparison& one : call.comparisons) {
    if (one.fault.empty()) continue;
    PassOnRound();
    SayAt({one.line, one.column}, one.fault);
    explained_ = true;
  }
  for (EventListener* const listener : listeners_) listener->OnCall(call);
}

void RunEvents::Message(const char* text) {
  if (parsing_) PassCaptured();
  Pass(text);
}

void RunEvents::Flush() {
  source_ = {};
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
  SayAt({source_.line, 0}, fmt::format("{} failed: {}", function_, why));
}

void RunEvents::Doubt(const std::string& why) {
  if (strict_) throw Unsupported(why);
  if (!std::exchange(doubted_, true)) Warn({source_.line, 0}, why);
}

void RunEvents::Warn(Place place, const std::string& why) {
  SayAt(place, why, Severity::kWarning);
}

void RunEvents::Say(const std::string& what, Severity severity) {
  PassOnRound();
  SayAt({0, 0}, what, severity);
}

void RunEvents::Remark(const std::string& what, Severity severity) {
  Tell({0, 0}, what, severity);
  console_.SayUnlessQuiet("icehost: " + what);
}

void RunEvents::SayAt(Place place, const std::string& what, Severity severity) {
  const std::string text = PlacedText(Tell(place, what, severity));
  console_.Say(WithRound(place.line == 0 ? "icehost: " + text : text));
}

Notice RunEvents::Tell(Place place, const std::string& what, Severity severity) {
  const CallSource source = place.line == 0 ? CallSource() : source_;
  Notice notice = {severity, what, name_, place, source, Now()};
  for (EventListener* const listener : listeners_) listener->OnNotice(notice);
  return notice;
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
