#include "host/reporter.h"

#include <fmt/format.h>

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

void Reporter::BeginScript(const std::string& script) {
  for (EventListener* const listener : listeners_) listener->OnScript(script);
}

void Reporter::EndScript(bool ran) {
  for (EventListener* const listener : listeners_) listener->OnScriptEnd(ran);
}

void Reporter::Show(const char* message) {
  progress_.Erase();
  for (EventListener* const listener : listeners_) listener->OnMessage(message);
  last_message_ = message;
  if (std::fputs(message, stdout) == EOF) FailOutput();
}

void Reporter::Say(const std::string& what) {
  progress_.Erase();
  std::fflush(stdout);
  for (EventListener* const listener : listeners_) listener->OnError(what);
  Complain(what);
}

void Reporter::Flush() {
  if (std::fflush(stdout) == EOF) FailOutput();
}

}  // namespace icehost
