// Makes any text safe to show on a terminal and to write as JSON or XML.
#ifndef ICESCRIPT_HOST_SYSTEM_TEXT_H_
#define ICESCRIPT_HOST_SYSTEM_TEXT_H_

#include <string>
#include <string_view>

namespace icehost {

// Returns the text as valid UTF-8 that cannot control a terminal. A space replaces each line
// separator, each control character except tabs, and each format character (these are invisible or
// change the direction of the text). A question mark replaces each byte that is not UTF-8. Every
// replacement is one column wide.
std::string Printable(std::string_view text);
// Returns the text in the same form, but keeps its line feeds.
std::string PrintableLines(std::string_view text);

// Returns the text as a JSON string in quotes, which cannot control a terminal. U+FFFD replaces
// bytes that are not UTF-8. All characters that are not ASCII are escaped.
std::string JsonText(std::string_view text);

// Returns the Printable text as escaped character data of XML 1.0, also for an attribute in double
// quotes. A question mark replaces each character that XML forbids.
std::string XmlText(std::string_view text);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_TEXT_H_
