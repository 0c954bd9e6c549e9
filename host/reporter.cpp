#include "host/reporter.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "host/system/errors.h"
#include "host/system/files.h"
#include "host/system/standard_streams.h"
#include "host/system/text.h"

namespace icehost {
namespace {

[[noreturn]] void FailOutput() {
  throw IoError(fmt::format("standard output: {}", std::strerror(errno)));
}

}  // namespace

Reporter::Reporter(const std::vector<EventListener*>& listeners, WorkLock& work,
                   const Options& options)
    : listeners_(listeners),
      work_(work),
      progress_(options.show_progress),
      quiet_(options.quiet),
      terminal_(isatty(fileno(output_.User())) != 0),
      shared_(IsSameFile(fileno(output_.User()), STDERR_FILENO)) {}

void Reporter::BeginScript(const std::string& path, const std::string& name) {
  for (EventListener* const listener : listeners_) listener->OnScript(path);
  name_ = name;
  in_script_ = true;
}

void Reporter::EndScript(bool ran) {
  in_script_ = false;
  for (EventListener* const listener : listeners_) listener->OnScriptEnd(ran);
}

void Reporter::EnterPlugin() {
  parsing_ = true;
  work_.LetGo();
}

void Reporter::OnCall(bool begins_operation) {
  work_.TakeUp();
  // What the reading of the script left is told before anything is played.
  if (std::exchange(parsing_, false)) ShowCaptured();
  if (begins_operation) progress_.OnOperation();
}

void Reporter::Show(const char* message) {
  if (parsing_) ShowCaptured();
  Pass(message);
}

void Reporter::Flush() {
  ShowCaptured();
  work_.LetGo();
  const int flushed = std::fflush(output_.User());
  work_.TakeUp();
  if (flushed == EOF) FailOutput();
}

void Reporter::Pass(const char* message) {
  work_.TakeUp();
  progress_.Erase();
  for (EventListener* const listener : listeners_) listener->OnMessage(message);
  last_message_ = message;
  if (!quiet_) Write(message);
  if (*message != '\0') mid_line_ = !quiet_ && last_message_.back() != '\n';
  if (parsing_) work_.LetGo();
}

// Lets go of the work meanwhile: nobody may take what is written.
void Reporter::Write(const char* message) {
  work_.LetGo();
  const int written = terminal_ ? std::fputs(PrintableLines(message).c_str(), output_.User())
                                : std::fputs(message, output_.User());
  work_.TakeUp();
  if (written == EOF) FailOutput();
}

void Reporter::ShowCaptured() {
  const std::string text = output_.Take();
  if (!text.empty()) Pass(text.c_str());
}

void Reporter::Say(const std::string& what) {
  SayLine(what, 0, "icehost: " + what);
}

void Reporter::SayAt(int line, int column, const std::string& what) {
  if (line == 0) return Say(what);
  std::string text = fmt::format("{}:{}:", name_, line);
  if (column != 0) text += fmt::format("{}:", column);
  text.append(" ").append(what);
  SayLine(text, line, text);
}

void Reporter::SayLine(const std::string& what, int line, const std::string& shown) {
  work_.LetGo();
  std::fflush(output_.User());
  work_.TakeUp();
  progress_.Erase();
  for (EventListener* const listener : listeners_) listener->OnError(what, line);
  if (shared_ && std::exchange(mid_line_, false)) std::fputc('\n', stderr);
  ComplainLine(shown);
}

void Reporter::Abandon(const std::string& what) {
  progress_.Erase();
  for (EventListener* const listener : listeners_) {
    listener->OnError(what, 0);
    if (in_script_) listener->OnScriptEnd(false);
  }
  Complain(what);
}

}  // namespace icehost
