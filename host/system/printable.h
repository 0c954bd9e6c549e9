// Text from scripts and from the network, for a terminal.
#ifndef ICESCRIPT_HOST_SYSTEM_PRINTABLE_H_
#define ICESCRIPT_HOST_SYSTEM_PRINTABLE_H_

#include <string>
#include <string_view>

namespace icehost {

// The text as valid UTF-8 with nothing in it that a terminal obeys. A control character but a tab,
// and what breaks lines or turns the direction of the text, becomes a blank; a byte that is no
// UTF-8 becomes a question mark. Each character takes as many columns as before: one.
std::string Printable(std::string_view text);
// The same line by line: line breaks stay.
std::string PrintableLines(std::string_view text);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_PRINTABLE_H_
