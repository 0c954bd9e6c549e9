// Text in XML.
#ifndef ICESCRIPT_HOST_SYSTEM_XML_TEXT_H_
#define ICESCRIPT_HOST_SYSTEM_XML_TEXT_H_

#include <string>
#include <string_view>

namespace icehost {

// The text as character data of an XML 1.0 document, whatever bytes it has: made Printable, and
// what XML still forbids becomes a question mark.
std::string XmlText(std::string_view text);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_XML_TEXT_H_
