#include "base/number.h"

#include <cstdlib>
#include <string>

namespace icescript {

int ParseNumber(std::string_view text, int base) {
  return static_cast<int>(std::strtol(std::string(text).c_str(), nullptr, base));
}

}  // namespace icescript
