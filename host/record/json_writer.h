// The events of a run as JSON lines for programs.
#ifndef ICESCRIPT_HOST_RECORD_JSON_WRITER_H_
#define ICESCRIPT_HOST_RECORD_JSON_WRITER_H_

#include <ostream>
#include <string>

#include "host/record/events.h"

namespace icehost {

// One object a line, told apart by its first key: {"script":PATH}, {"call":NAME, arguments...,
// "result":N, outputs...}, {"message":TEXT}, {"error":TEXT}, {"end":true or false}. Bits are
// hexadecimal texts. A byte that is not UTF-8 is replaced by U+FFFD; what is not ASCII is
// escaped, so that no terminal takes it for a command.
class JsonWriter : public EventListener {
 public:
  // `stream` must outlive the writer.
  explicit JsonWriter(std::ostream& stream) : stream_(stream) {}
  void OnScript(const std::string& path) override;
  void OnCall(const CallEvent& call) override;
  void OnMessage(const char* text) override;
  void OnError(const std::string& text, int line) override;
  void OnScriptEnd(bool ran) override;

 private:
  std::ostream& stream_;
  std::string line_;  // kept for its room
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RECORD_JSON_WRITER_H_
