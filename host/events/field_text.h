// The values of host calls in words.
#ifndef ICESCRIPT_HOST_EVENTS_FIELD_TEXT_H_
#define ICESCRIPT_HOST_EVENTS_FIELD_TEXT_H_

#include <string>
#include <string_view>

#include "host/events/events.h"

namespace icehost {

// Of the bits of Kind::kFlags, lowest first.
constexpr const char* kFlagNames[] = {"WRITE_OUT", "READ_IN", "WRITE_OE", "START", "END"};
constexpr int kFlags = 5;

// The name of a code, a mode or a reset that has one, else null.
const char* NameOf(const Field& field);

// Appends the value for people: a code by its name, the bits of pins and flags by theirs.
void AppendText(const Field& field, std::string& text);

// Returns "IR " or "DR " for an output of a scan, and an empty text for the pins.
const char* RegisterOf(std::string_view output);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_FIELD_TEXT_H_
