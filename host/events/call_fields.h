// The arguments and results of host calls, by name, for writers of text.
#ifndef ICESCRIPT_HOST_EVENTS_CALL_FIELDS_H_
#define ICESCRIPT_HOST_EVENTS_CALL_FIELDS_H_

#include <string>
#include <string_view>
#include <vector>

#include "host/events/events.h"

namespace icehost {

struct Field {
  // What the number stands for. The bytes of a register are not a number.
  enum class Kind { kNumber, kPins, kFlags, kCode, kMode, kReset, kBytes };

  const char* name;
  Kind kind;
  int number;
  std::string bytes;  // "0x" and two digits for each byte, the most significant first
};

// Names of the bits of Field::Kind::kFlags, lowest first.
constexpr const char* kFlagNames[] = {"WRITE_OUT", "READ_IN", "WRITE_OE", "START", "END"};
constexpr int kFlags = 5;

struct CallFields {
  std::vector<Field> arguments;
  std::vector<Field> outputs;  // what the call answered with, besides its result
};
CallFields FieldsOf(const HostCall& call);
// The function's name, such as "link_reset".
const char* FunctionOf(const HostCall& call);

// The name of a code, a mode or a reset, or null if it has none.
const char* NameOf(const Field& field);
// Appends the value for people: a code by its name, the bits of pins and flags by theirs.
void AppendText(const Field& field, std::string& text);
// "IR " or "DR " if an output is a register's, else "": pins need no name.
const char* RegisterOf(std::string_view output);
// Whether the call asks for the wire mode, as every scan does first.
bool AsksForInterface(const CallEvent& call);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_CALL_FIELDS_H_
