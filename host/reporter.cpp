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

Reporter::Reporter(const std::vector<EventListener*>& listeners, std::recursive_mutex& busy,
                   const Options& options)
    : listeners_(listeners),
      busy_(busy),
      progress_(options.show_progress),
      quiet_(options.quiet),
      terminal_(isatty(fileno(output_.User())) != 0) {}

void Reporter::BeginScript(const std::string& script) {
  const std::lock_guard<std::recursive_mutex> lock(busy_);
  for (EventListener* const listener : listeners_) listener->OnScript(script);
  in_script_ = parsing_ = true;
}

void Reporter::EndScript(bool ran) {
  const std::lock_guard<std::recursive_mutex> lock(busy_);
  in_script_ = false;
  for (EventListener* const listener : listeners_) listener->OnScriptEnd(ran);
}

void Reporter::CountOperation() {
  progress_.OnOperation();
  parsing_ = false;
}

void Reporter::Show(const char* message) {
  ShowCaptured();
  Pass(message);
}

void Reporter::Flush() {
  parsing_ = true;
  ShowCaptured();
  if (std::fflush(output_.User()) == EOF) FailOutput();
}

void Reporter::Pass(const char* message) {
  {
    const std::lock_guard<std::recursive_mutex> lock(busy_);
    progress_.Erase();
    for (EventListener* const listener : listeners_) listener->OnMessage(message);
    last_message_ = message;
  }
  if (quiet_) return;
  const int written = terminal_ ? std::fputs(PrintableLines(message).c_str(), output_.User())
                                : std::fputs(message, output_.User());
  if (written == EOF) FailOutput();
}

void Reporter::ShowCaptured() {
  if (!parsing_) return;
  const std::string text = output_.Take();
  if (!text.empty()) Pass(text.c_str());
}

void Reporter::Say(const std::string& what) {
  std::fflush(output_.User());
  const std::lock_guard<std::recursive_mutex> lock(busy_);
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
