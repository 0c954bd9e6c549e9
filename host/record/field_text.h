// The values of host calls in words.
#ifndef ICESCRIPT_HOST_RECORD_FIELD_TEXT_H_
#define ICESCRIPT_HOST_RECORD_FIELD_TEXT_H_

#include <string>

#include "host/record/events.h"

namespace icehost {

// Appends the value for people: a code by its name, the bits of pins and flags by theirs.
void AppendText(const Field& field, std::string& text);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RECORD_FIELD_TEXT_H_
