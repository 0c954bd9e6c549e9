// The events of a run, and the interface that receives them.
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

// The time since the run began, or a duration.
using RunTime = std::chrono::microseconds;

// The place in the script that a host call comes from.
struct CallSource {
  int line = 0;  // from 1; 0: unknown
  // For a JTAG script:
  int operation = -1;  // from 0
  const std::string* section = nullptr;
  // For a scan: whether its section reads, and the masks of the bits that the section compares. A
  // mask consists of bytes, least significant first, and is null if no bits are compared.
  bool reads = false;
  const std::string* ir_mask = nullptr;
  const std::string* dr_mask = nullptr;
};

// A value that was read, and the value that the script expects.
struct Comparison {
  const char* of;  // the output that was compared: "ir_out", "dr_out" or "data"
  int line;        // the place of the expectation
  int column;
  // "0x" and two digits for each byte, the most significant first.
  std::string expected;
  std::string mask;
  std::string captured;                 // empty if the probe does not report the value
  std::string fault;                    // says how the values differ; empty if they do not
  std::vector<std::size_t> wrong_bits;  // the numbers of the bits; 0 is the least significant
};

// The steps of the pins (PinStep) from `begin` to `end - 1`; empty if the probe shows no pins.
struct StepRange {
  std::size_t begin = 0;
  std::size_t end = 0;
};

// One register of a scan. Bytes are least significant first, and fit into the interface's arrays.
// Over two wires, the plug-in adds a byte, which `bits` and `in` include, but `out` does not.
struct ScanRegister {
  int bits = 0;
  std::string in;
  std::optional<std::string> out;  // nothing if the probe has not reported it
};

struct Scan {
  ScanRegister ir;
  ScanRegister dr;
  int wires = 0;                     // a CDI_ANSWER_ value
  const ChainScan* chain = nullptr;  // null if the TAP is alone, or the probe hides the other TAPs
};

// The host calls and their outputs: one type for each link_ function (entry/icescript.h).
struct ConfigCall {
  int code;
  int value;
};
struct ResetCall {
  int kind;
};
struct InsertCall {
  const Scan* scan;  // without captured bits
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

// A host call. The event and everything that it points to are valid until OnCall returns.
struct CallEvent {
  HostCall call;
  int result;
  std::vector<Comparison> comparisons;
  CallSource source;
  StepRange steps;                // of the pins, during the call
  RunTime at{0};                  // when the plug-in made the call
  std::optional<RunTime> took{};  // how long a probe across a network took to answer

  // Returns the call if it is of this type, else null.
  template <class Call>
  const Call* As() const {
    return std::get_if<Call>(&call);
  }
};

// A problem at a place in a script. Lines and columns count from 1; columns are bytes.
struct SourceMark {
  int line;
  int column;
  Severity severity;
  std::string text;
};

struct RunScript {
  std::string path;  // as the user wrote it; "-" is standard input
  const Plan* plan;  // exists as long as the run; null if the script could not be read
};

struct RunBegin {
  std::vector<std::string> arguments;  // the whole command line
  std::string probe;                   // a readable description
  std::string version;                 // of icehost
  std::chrono::system_clock::time_point started;
  std::vector<RunScript> scripts;
};

struct ScriptBegin {
  std::size_t index;  // in RunBegin::scripts
  std::string path;
  std::string name;               // for messages
  std::string_view content;       // the content of the file
  std::vector<SourceMark> marks;  // the problems that `check` finds
  RunTime at{0};
};

// The numbers of expected values that were met, not met, and not read. A value in a REPT block
// counts as not met if it was wrong at least once.
struct ValueCounts {
  long met = 0;
  long unmet = 0;
  long unread = 0;
};
ValueCounts operator+(const ValueCounts& one, const ValueCounts& other);

struct ScriptEnd {
  bool ran;  // false if the script failed (a wrong value is a failure) or was interrupted
  ValueCounts values;
  std::vector<const Expectation*> unread;  // the first 1000; they point into the script's plan
  RunTime at{0};
};

// A message from icehost about a script or the run.
struct Notice {
  Severity severity;
  std::string text;
  std::string name;   // the name of the script
  Place place;        // in the script; a line or column of 0 means there is none
  CallSource source;  // of the current call
  RunTime at{0};
};
// Returns the text of a notice, preceded by its place if it has one.
std::string PlacedText(const Notice& notice);

struct RunCounts {
  long operations = 0;  // pin operations, scans, resets, wire settings
  long bits = 0;        // bits shifted through an IR or DR
  long reads = 0;       // pin reads, and scans
};

struct RunEnd {
  int status;           // the exit status
  std::string verdict;  // the status in one word
  RunCounts counts;
  std::optional<long> tck_cycles;  // nothing if the probe does not report them
  ValueCounts values;              // of all scripts, in all rounds
  std::size_t begun;               // the number of scripts that began
  std::optional<long> rounds;      // in a repeated run, the number of rounds played to their ends
  long failed_rounds;
  RunTime at{0};
};

class EventListener {
 public:
  virtual ~EventListener() = default;
  virtual void OnRunBegin(const RunBegin& /*run*/) {}
  // A round of a repeated run begins: round 1, or a later round that fails.
  virtual void OnRound(long /*round*/) {}
  virtual void OnScript(const ScriptBegin& /*script*/) {}
  // The script that has just begun asks for a TAP reset. Its first scan begins with the reset.
  virtual void OnResetRequest() {}
  // Called before the first scan if scripts address a TAP in a chain of several TAPs.
  virtual void OnPlace(const ChainPlace& /*place*/) {}
  virtual void OnCall(const CallEvent& call) = 0;
  // The plug-in has printed a message, which may be a part of a line.
  virtual void OnMessage(const char* /*text*/) {}
  // A notice that explains a failed call comes before the OnCall of this call. A notice about the
  // run may come while no script runs.
  virtual void OnNotice(const Notice& /*notice*/) {}
  virtual void OnScriptEnd(const ScriptEnd& /*end*/) {}
  // Called once, as the last event, however the run ends. Output::End may come before it.
  virtual void OnRunEnd(const RunEnd& /*end*/) {}
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_EVENTS_H_
