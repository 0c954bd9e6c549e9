#include "host/reporter.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "host/system/errors.h"
#include "host/system/printable.h"

namespace icehost {
namespace {

[[noreturn]] void FailOutput() {
  throw IoError(fmt::format("standard output: {}", std::strerror(errno)));
}

}  // namespace

void Complain(std::string what) {
  while (!what.empty() && what.back() == '\n') what.pop_back();
  // Where standard error takes no more, there is nobody left to tell.
  std::fputs(fmt::format("icehost: {}\n", Printable(what)).c_str(), stderr);
}

Reporter::Reporter(const std::vector<EventListener*>& listeners, WorkLock& work,
                   const Options& options)
    : listeners_(listeners),
      work_(work),
      progress_(options.show_progress),
      quiet_(options.quiet),
      terminal_(isatty(fileno(output_.User())) != 0) {}

void Reporter::BeginScript(const std::string& script) {
  for (EventListener* const listener : listeners_) listener->OnScript(script);
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

void Reporter::OnCall(const char* operation) {
  work_.TakeUp();
  parsing_ = false;
  if (operation != nullptr) progress_.OnOperation();
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
  work_.LetGo();
  std::fflush(output_.User());
  work_.TakeUp();
  progress_.Erase();
  for (EventListener* const listener : listeners_) listener->OnError(what);
  Complain(what);
}

void Reporter::Abandon(const std::string& what) {
  progress_.Erase();
  for (EventListener* const listener : listeners_) {
    listener->OnError(what);
    if (in_script_) listener->OnScriptEnd(false);
  }
  Complain(what);
}

}  // namespace icehost
