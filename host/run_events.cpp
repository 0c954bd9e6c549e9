#include "host/run_events.h"

#include <fmt/format.h>

#include <utility>

#include "host/system/errors.h"
#include "host/system/standard_streams.h"

namespace icehost {

void RunEvents::BeginScript(const RunScript& script, const std::vector<SourceMark>& marks) {
  for (EventListener* const listener : outputs_.listeners) {
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
  for (EventListener* const listener : outputs_.listeners) listener->OnResetRequest();
}

void RunEvents::SetPlace(const ChainPlace& place, bool measured) {
  for (EventListener* const listener : outputs_.listeners) listener->OnPlace(place);
  if (!measured) return;
  Remark(fmt::format("measured: --chain {} --tap {}", fmt::join(place.ir_lengths, ","),
                     place.tap + 1));
}

void RunEvents::EndScript(bool ran) {
  in_script_ = false;
  for (EventListener* const listener : outputs_.listeners) listener->OnScriptEnd(ran);
}

void RunEvents::Abandon(const std::string& why) {
  for (EventListener* const listener : outputs_.listeners) listener->OnError(why, 0);
  if (in_script_) EndScript(false);
  console_.Close();
  Complain(why);
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
    if (!one.fault.empty()) SayAt(one.line, one.column, one.fault);
    explained_ = explained_ || !one.fault.empty();
  }
  for (EventListener* const listener : outputs_.listeners) listener->OnCall(call);
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
  for (EventListener* const listener : outputs_.listeners) listener->OnMessage(message);
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
  SayAt(source_.line, 0, fmt::format("{} failed: {}", function_, why));
}

void RunEvents::Doubt(const std::string& why) {
  if (strict_) throw Unsupported(why);
  if (!std::exchange(doubted_, true)) SayAt(source_.line, 0, fmt::format("warning: {}", why));
}

void RunEvents::SayAt(int line, int column, const std::string& what) {
  if (line == 0) return Say(what);
  std::string text = fmt::format("{}:{}:", name_, line);
  if (column != 0) text += fmt::format("{}:", column);
  text.append(" ").append(what);
  Error(text, line, text);
}

void RunEvents::Say(const std::string& what) {
  Error(what, 0, "icehost: " + what);
}

void RunEvents::Remark(const std::string& what) {
  Tell(what, 0);
  console_.SayUnlessQuiet("icehost: " + what);
}

void RunEvents::Tell(const std::string& what, int line) {
  for (EventListener* const listener : outputs_.listeners) listener->OnError(what, line);
}

void RunEvents::Error(const std::string& what, int line, const std::string& shown) {
  Tell(what, line);
  console_.Say(shown);
}

void RunEvents::BeginOperation(const std::string& name, const CallSource& source) {
  for (StepRecorder* const recorder : outputs_.recorders) recorder->BeginOperation(name, source);
}

void RunEvents::Record(const PinStep& step) {
  for (StepRecorder* const recorder : outputs_.recorders) recorder->Record(step);
}

}  // namespace icehost
