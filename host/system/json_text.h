// Text in a line of JSON.
#ifndef ICESCRIPT_HOST_SYSTEM_JSON_TEXT_H_
#define ICESCRIPT_HOST_SYSTEM_JSON_TEXT_H_

#include <string>
#include <string_view>

namespace icehost {

// The text in quotes. A byte that is not UTF-8 is replaced by U+FFFD; what is not ASCII is escaped,
// so that no terminal takes it for a command.
std::string JsonText(std::string_view text);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_JSON_TEXT_H_
