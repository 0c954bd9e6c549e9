// Makes any text fit for a terminal, for JSON and for XML.
#ifndef ICESCRIPT_HOST_SYSTEM_TEXT_H_
#define ICESCRIPT_HOST_SYSTEM_TEXT_H_

#include <string>
#include <string_view>

namespace icehost {

// Returns the text as valid UTF-8 with nothing in it that a terminal obeys. A blank replaces a
// control character other than a tab, a line separator, and a format character, which is invisible
// or changes the direction of the text. A question mark replaces a byte that is not UTF-8. Every
// replacement is one column wide.
std::string Printable(std::string_view text);
// Does the same for each line: line breaks stay.
std::string PrintableLines(std::string_view text);

// Returns the text as a JSON string, in quotes. U+FFFD replaces a byte that is not UTF-8. What is
// not ASCII is escaped, so that no terminal takes it for a command.
std::string JsonText(std::string_view text);

// Returns the text as character data of an XML 1.0 document, or as the value of an attribute in
// double quotes: made Printable, with a question mark
// for a character that XML still forbids.
std::string XmlText(std::string_view text);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_TEXT_H_
