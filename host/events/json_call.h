// Host calls as JSON lines. They are put together by hand: a long run has millions of them.
#ifndef ICESCRIPT_HOST_EVENTS_JSON_CALL_H_
#define ICESCRIPT_HOST_EVENTS_JSON_CALL_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "host/events/events.h"

namespace icehost {

// Appends the line of a call in the script of this index.
void AppendCall(const CallEvent& call, std::size_t script, std::string& line);

void AppendNumber(long number, std::string& line);
// Appends a member; its key comes with what is round it, as in `,"line":`.
void AppendMember(std::string_view key, long number, std::string& line);
// Appends the section and the operation, if the call is one of a JTAG script.
void AppendSection(const CallSource& source, std::string& line);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_JSON_CALL_H_
