// Writes host calls as JSON lines. Appends to a string for speed, because runs may be long.
#ifndef ICESCRIPT_HOST_EVENTS_JSON_CALL_H_
#define ICESCRIPT_HOST_EVENTS_JSON_CALL_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "host/events/events.h"

namespace icehost {

// Appends a call as a JSON object, and a line feed, to `line`. `script` is the index of its script.
void AppendCall(const CallEvent& call, std::size_t script, std::string& line);

void AppendNumber(long number, std::string& line);
// Appends a member. `key` includes the punctuation, as in `,"line":`.
void AppendMember(std::string_view key, long number, std::string& line);
// Appends the section and the operation if the call comes from a JTAG script.
void AppendSection(const CallSource& source, std::string& line);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_JSON_CALL_H_
