// Numbers in scripts.
#ifndef ICESCRIPT_BASE_NUMBER_H_
#define ICESCRIPT_BASE_NUMBER_H_

#include <string_view>

namespace icescript {

// Converts as strtol does in `base` (10 or 16): leading white space and a sign are accepted, the
// first character that does not fit ends the number, no digits give 0, and too large a number
// saturates at the limits of long. The result is the low 32 bits of that, so a saturated number is
// -1 or 0.
int ParseNumber(std::string_view text, int base);

}  // namespace icescript

#endif  // ICESCRIPT_BASE_NUMBER_H_
