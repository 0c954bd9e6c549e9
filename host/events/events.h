// What happens in a run, and who hears of it.
#ifndef ICESCRIPT_HOST_EVENTS_EVENTS_H_
#define ICESCRIPT_HOST_EVENTS_EVENTS_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/target/chain_place.h"

namespace icehost {

// Where in its script a host call comes from.
struct CallSource {
  int line = 0;                          // from 1; 0: unknown
  int operation = -1;                    // of a JTAG script, from 0
  const std::string* section = nullptr;  // of a JTAG script
  // For a scan of a JTAG script: whether its section reads, and the bits that it compares (bytes,
  // least significant first; null: none).
  bool reads = false;
  const std::string* ir_mask = nullptr;
  const std::string* dr_mask = nullptr;
};

// A value that was read, beside the value that the script expects.
struct Comparison {
  const char* of;  // the output that was compared: "ir_out", "dr_out" or "data"
  int line;        // of the expectation
  int column;
  // "0x" and two digits for each byte, the most significant first.
  std::string expected;
  std::string mask;
  std::string captured;                 // empty if the probe does not report it
  std::string fault;                    // why it is not met, in words; empty: it is
  std::vector<std::size_t> wrong_bits;  // the least significant is bit 0
};

// Steps of a probe's pins (PinStep), counted from 0; empty for a probe that shows none.
struct StepRange {
  std::size_t begin = 0;
  std::size_t end = 0;
};

// One register of a scan. All bytes are least significant first; no more of them than the arrays of
// the interface hold.
struct ScanRegister {
  int bits = 0;                    // as the plug-in asks, with the extra byte of two wires
  std::string in;                  // with that byte
  std::optional<std::string> out;  // without it; empty if nothing was captured or reported
};

struct Scan {
  ScanRegister ir;
  ScanRegister dr;
  int wires = 0;                     // a CDI_ANSWER_
  const ChainScan* chain = nullptr;  // null unless the TAP is in a chain
};

// The host calls, with their answers: one type for each link_ function (entry/icescript.h).
struct ConfigCall {
  int code;
  int value;
};
struct ResetCall {
  int kind;
};
struct InsertCall {
  const Scan* scan;  // nothing captured yet
};
struct ExecuteCall {
  const Scan* scan;
};
struct GpioCall {
  int out_value;
  int oe_mask;
  int flags;
  std::optional<int> data;  // the levels, if they were read
};
using HostCall = std::variant<ConfigCall, ResetCall, InsertCall, ExecuteCall, GpioCall>;

// Valid, with all that it points to, until OnCall returns.
struct CallEvent {
  HostCall call;
  int result;
  std::vector<Comparison> comparisons;
  CallSource source;
  StepRange steps;  // what the call did to the pins

  // The call of this type, or null.
  template <class Call>
  const Call* As() const {
    return std::get_if<Call>(&call);
  }
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
  // In a repeated run: a round begins, from 1. The rounds that are left out were as expected.
  virtual void OnRound(long /*round*/) {}
  virtual void OnScript(const std::string& /*path*/) {}
  // The script that has just begun asks for a TAP reset, which its first scan begins with.
  virtual void OnResetRequest() {}
  // Scripts address the TAP at this place in a chain of several. Comes before the first scan.
  virtual void OnPlace(const ChainPlace& /*place*/) {}
  // The text of the script that begins next, and what `check` finds in it.
  virtual void OnSource(std::string_view /*name*/, std::string_view /*content*/,
                        const std::vector<SourceMark>& /*marks*/) {}
  virtual void OnCall(const CallEvent& call) = 0;
  // A message of the plug-in's; some are pieces of a line.
  virtual void OnMessage(const char* /*text*/) {}
  // Why a call or a script failed, in icehost's words; `line` is 0 if it concerns no line.
  virtual void OnError(const std::string& /*text*/, int /*line*/) {}
  virtual void OnScriptEnd(bool /*ran*/) {}
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_EVENTS_H_
