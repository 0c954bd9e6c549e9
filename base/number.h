// The conversion of numbers in scripts.
#ifndef ICESCRIPT_BASE_NUMBER_H_
#define ICESCRIPT_BASE_NUMBER_H_

#include <string_view>

namespace icescript {

// Converts `text` in `base` (10 or 16) as strtol does, and returns the low 32 bits: white space and
// a sign may come first, and the first character that is not a digit ends the number. Returns 0 if
// there is no digit, and -1 (0 if negative) for a number beyond the range of long.
int ParseNumber(std::string_view text, int base);

}  // namespace icescript

#endif  // ICESCRIPT_BASE_NUMBER_H_
