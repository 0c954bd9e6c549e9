// What happens in a run, and who hears of it.
#ifndef ICESCRIPT_HOST_EVENTS_EVENTS_H_
#define ICESCRIPT_HOST_EVENTS_EVENTS_H_

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/check/plan.h"
#include "host/check/problems.h"
#include "host/target/chain_place.h"

namespace icehost {

// When something happened, since the run began; or how long it took.
using RunTime = std::chrono::microseconds;

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
  StepRange steps;                // what the call did to the pins
  RunTime at{0};                  // when the plug-in called
  std::optional<RunTime> took{};  // until the probe had answered; only across a network

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
  Severity severity;
  std::string text;
};

// A script of the run. The plan, which is null if the script could not be read, lives as long as
// the run.
struct RunScript {
  std::string path;  // as the user names it; "-" is standard input
  const Plan* plan;
};

struct RunBegin {
  std::vector<std::string> arguments;  // of the command line, as given
  std::string probe;                   // for people
  std::string version;                 // of icehost
  std::chrono::system_clock::time_point started;
  std::vector<RunScript> scripts;
};

struct ScriptBegin {
  std::size_t index;  // in RunBegin::scripts
  std::string path;
  std::string name;               // in messages
  std::string_view content;       // of the file
  std::vector<SourceMark> marks;  // what `check` finds in it
  RunTime at{0};
};

// What became of the values that scripts expect. In a REPT block a value that was once not as
// expected is not met.
struct ValueCounts {
  long met = 0;
  long unmet = 0;
  long unread = 0;
};
ValueCounts operator+(const ValueCounts& one, const ValueCounts& other);

struct ScriptEnd {
  bool ran;  // without fault
  ValueCounts values;
  std::vector<const Expectation*> unread;  // the first of them, in the plan of the script
  RunTime at{0};
};

// Something that icehost says about a script or the run.
struct Notice {
  Severity severity;
  std::string text;
  std::string name;   // of the script
  Place place;        // what it concerns; a line or a column of 0: it concerns none
  CallSource source;  // of the call under way
  RunTime at{0};
};
// Returns the text with its place before it.
std::string PlacedText(const Notice& notice);

// What was played.
struct RunCounts {
  long operations = 0;  // pin operations, scans, resets, wire settings
  long bits = 0;        // shifted through an IR or DR
  long reads = 0;       // pin reads, and scans
};

struct RunEnd {
  int status;           // of the process
  std::string verdict;  // a word for it
  RunCounts counts;
  std::optional<long> tck_cycles;  // none: the probe does not show them
  ValueCounts values;              // of all scripts, in all rounds
  std::size_t begun;               // how many of the scripts began
  std::optional<long> rounds;      // of a repeated run: played to their ends
  long failed_rounds;
  RunTime at{0};
};

class EventListener {
 public:
  virtual ~EventListener() = default;
  virtual void OnRunBegin(const RunBegin& /*run*/) {}
  // In a repeated run: a round begins, from 1. The rounds that are left out were as expected.
  virtual void OnRound(long /*round*/) {}
  virtual void OnScript(const ScriptBegin& /*script*/) {}
  // The script that has just begun asks for a TAP reset, which its first scan begins with.
  virtual void OnResetRequest() {}
  // Scripts address the TAP at this place in a chain of several. Comes before the first scan.
  virtual void OnPlace(const ChainPlace& /*place*/) {}
  virtual void OnCall(const CallEvent& call) = 0;
  // A message of the plug-in's; some are pieces of a line.
  virtual void OnMessage(const char* /*text*/) {}
  // Comes before the call whose failure it explains, and outside a script if it concerns the run.
  virtual void OnNotice(const Notice& /*notice*/) {}
  virtual void OnScriptEnd(const ScriptEnd& /*end*/) {}
  // Comes once, however the run ends; only Output::End has been called before.
  virtual void OnRunEnd(const RunEnd& /*end*/) {}
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_EVENTS_H_
