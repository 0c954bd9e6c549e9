// What happens during a run, for whoever writes it down.
#ifndef ICESCRIPT_HOST_RECORD_EVENTS_H_
#define ICESCRIPT_HOST_RECORD_EVENTS_H_

#include <string>
#include <vector>

namespace icehost {

// One argument or result of a host call, by name.
struct Field {
  // What a number stands for. The bytes of a register are no number.
  enum class Kind { kNumber, kPins, kFlags, kCode, kMode, kReset, kBytes };

  const char* name;
  Kind kind;
  int number;
  std::string bytes;  // "0x" and two digits a byte, the most significant first
};

struct CallEvent {
  const char* function;
  std::vector<Field> arguments;
  int result;
  std::vector<Field> outputs;  // what the call answered with, besides its result
};

class EventListener {
 public:
  virtual ~EventListener() = default;
  virtual void OnScript(const std::string& path) = 0;
  virtual void OnCall(const CallEvent& call) = 0;
  virtual void OnMessage(const char* text) = 0;
  // Why a call or a script failed, in icehost's words.
  virtual void OnError(const std::string& text) = 0;
  virtual void OnScriptEnd(bool ran) = 0;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RECORD_EVENTS_H_
