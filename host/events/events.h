// What happens during a run, for whoever writes it down.
#ifndef ICESCRIPT_HOST_EVENTS_EVENTS_H_
#define ICESCRIPT_HOST_EVENTS_EVENTS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
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

// Where in its script a host call comes from.
struct CallSource {
  int line = 0;                          // from 1; 0: unknown
  int operation = -1;                    // of a JTAG script, from 0
  const std::string* section = nullptr;  // of a JTAG script
  // Of a scan of a JTAG script: whether its section reads, and the bits that it compares (bytes,
  // least significant first; null: none).
  bool reads = false;
  const std::string* ir_mask = nullptr;
  const std::string* dr_mask = nullptr;
};

// A value that was read, beside what the script expects of it: bytes as in a Field.
struct Comparison {
  const char* of;  // the output that was compared
  int line;        // of the expectation
  int column;
  std::string expected;
  std::string mask;
  std::string captured;  // empty where the probe does not tell
  bool met;
};

// The steps of a probe's pins (PinStep), counted from 0; of a probe that shows none, empty.
struct StepRange {
  std::size_t begin = 0;
  std::size_t end = 0;
};

struct CallEvent {
  const char* function;
  std::vector<Field> arguments;
  int result;
  std::vector<Field> outputs;  // what the call answered with, besides its result
  std::vector<Comparison> comparisons;
  CallSource source;
  StepRange steps;  // what the call did to the pins
};

// A remark on a place of a script, both from 1; columns are bytes.
struct SourceMark {
  int line;
  int column;
  bool error;  // else a warning
  std::string text;
};

class EventListener {
 public:
  virtual ~EventListener() = default;
  virtual void OnScript(const std::string& /*path*/) {}
  // The text of the script that begins next, and what `check` finds in it.
  virtual void OnSource(std::string_view /*name*/, std::string_view /*content*/,
                        const std::vector<SourceMark>& /*marks*/) {}
  virtual void OnCall(const CallEvent& call) = 0;
  virtual void OnMessage(const char* /*text*/) {}
  // Why a call or a script failed, in icehost's words; `line` is 0 where it is of no line.
  virtual void OnError(const std::string& /*text*/, int /*line*/) {}
  virtual void OnScriptEnd(bool /*ran*/) {}
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_EVENTS_H_
