#ifndef ICESCRIPT_BASE_NUMBER_H_
#define ICESCRIPT_BASE_NUMBER_H_

#include <string_view>

namespace icescript {

// Converts `text` in `base` (10 or 16) as strtol does, and returns the low 32 bits. White space and
// a sign may come first. The first character that is not a digit ends the number. Returns 0 if
// there is no digit. For a number beyond the range of long, returns -1, or 0 if it is negative.
int ParseNumber(std::string_view text, int base);

}  // namespace icescript

#endif  // ICESCRIPT_BASE_NUMBER_H_
