// The arguments and results of host calls, with their names, for outputs that write text.
#ifndef ICESCRIPT_HOST_EVENTS_CALL_FIELDS_H_
#define ICESCRIPT_HOST_EVENTS_CALL_FIELDS_H_

#include <string>
#include <string_view>
#include <vector>

#include "host/events/events.h"

namespace icehost {

struct Field {
  // The meaning of `number`. A field of kind kBytes has `bytes` instead.
  enum class Kind { kNumber, kPins, kFlags, kCode, kMode, kReset, kBytes };

  const char* name;
  Kind kind;
  int number;
  std::string bytes;  // "0x" and two digits for each byte, the most significant first
};

// The names of the bits of Field::Kind::kFlags, the lowest bit first.
constexpr const char* kFlagNames[] = {"WRITE_OUT", "READ_IN", "WRITE_OE", "START", "END"};
constexpr int kFlags = 5;

struct CallFields {
  std::vector<Field> arguments;
  std::vector<Field> outputs;  // the values that the call returns besides its result
};
CallFields FieldsOf(const HostCall& call);
// Returns the name of the function, such as "link_reset".
const char* FunctionOf(const HostCall& call);

// Returns the name of a code, mode or reset. Returns null for other kinds and unknown numbers.
const char* NameOf(const Field& field);
// Appends the value of a field to `text` in readable form, with the names of codes, pins and flags.
void AppendText(const Field& field, std::string& text);
// Returns "IR " or "DR " if `output` is "ir_out" or "dr_out", else "".
const char* RegisterOf(std::string_view output);
// Returns whether the call asks for the wire mode, as the plug-in does before every scan.
bool AsksForInterface(const CallEvent& call);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_CALL_FIELDS_H_
