// Lines of a JTAG script that are not what they were meant to be.
#ifndef ICESCRIPT_HOST_CHECK_INI_HINTS_H_
#define ICESCRIPT_HOST_CHECK_INI_HINTS_H_

#include <string>
#include <string_view>

#include "host/check/ini_sections.h"
#include "host/check/problems.h"

namespace icehost {

// A text as it was meant where blanks were taken as blanks.
std::string WithoutBlanks(std::string_view text);

// What is wrong with a line that is neither a header nor a value, in a section of these keys.
std::string WhyNoIniLine(std::string_view text, const IniKeys& keys);

// Reports a key that means nothing in a section of these keys.
void WarnOfKey(const ScriptLine& line, const IniKeys& keys, std::string_view name,
               Problems& problems);

// Reports the tag of a GPIO script as the header of a section: it counts on the first line alone.
void WarnOfLateTag(const ScriptLine& header, std::string_view name, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_INI_HINTS_H_
