// The events of a run as JSON lines for programs.
#ifndef ICESCRIPT_HOST_EVENTS_JSON_WRITER_H_
#define ICESCRIPT_HOST_EVENTS_JSON_WRITER_H_

#include <ostream>
#include <string>
#include <string_view>

#include "host/events/events.h"
#include "host/events/output.h"

namespace icehost {

// One object a line, told apart by its first key: "schema", "script", "call", "message", "error" or
// "end"; docs/json.md describes them. ASCII only.
class JsonWriter : public Output, public EventListener {
 public:
  // `stream` must outlive the writer.
  explicit JsonWriter(std::ostream& stream) : stream_(stream) {}
  // The line that says what follows.
  void Begin() override;
  void OnScript(const std::string& path) override;
  void OnCall(const CallEvent& call) override;
  void OnMessage(const char* text) override;
  void OnError(const std::string& text, int line) override;
  void OnScriptEnd(bool ran) override;

 private:
  void WriteText(const char* key, std::string_view text);

  std::ostream& stream_;
  std::string line_;  // kept for its room
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_JSON_WRITER_H_
