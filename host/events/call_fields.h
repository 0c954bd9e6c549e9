// Names the arguments and results of host calls, for writers of text.
#ifndef ICESCRIPT_HOST_EVENTS_CALL_FIELDS_H_
#define ICESCRIPT_HOST_EVENTS_CALL_FIELDS_H_

#include <string>
#include <string_view>
#include <vector>

#include "host/events/events.h"

namespace icehost {

struct Field {
  // The meaning of `number`. A kBytes field has no number, only `bytes`.
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
  std::vector<Field> outputs;  // what the call returns besides its result
};
CallFields FieldsOf(const HostCall& call);
// Returns the name of the function, such as "link_reset".
const char* FunctionOf(const HostCall& call);

// Returns the name of a code, a mode or a reset; null if it has none.
const char* NameOf(const Field& field);
// Appends the value in readable form, with the names of codes and of the bits of pins and flags.
void AppendText(const Field& field, std::string& text);
// Returns "IR " or "DR " for the output of that register, else "".
const char* RegisterOf(std::string_view output);
// Returns whether the call asks for the wire mode, which is the first call of every scan.
bool AsksForInterface(const CallEvent& call);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_CALL_FIELDS_H_
