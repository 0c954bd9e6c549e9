// Numbers that are too large for the plug-in.
#ifndef ICESCRIPT_HOST_CHECK_WIDE_NUMBERS_H_
#define ICESCRIPT_HOST_CHECK_WIDE_NUMBERS_H_

#include <string>
#include <string_view>

namespace icehost {

// Whether the plug-in, which keeps the low 32 bits of a number, makes another one of it.
bool IsCutNumber(std::string_view text, int base);

// What is then said of it.
std::string CutNumber(std::string_view text, int base);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_WIDE_NUMBERS_H_
