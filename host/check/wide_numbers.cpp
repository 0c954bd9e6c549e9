#include "host/check/wide_numbers.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

#include "base/number.h"

namespace icehost {

bool IsCutNumber(std::string_view text, int base) {
  if (text.size() < 8) return false;  // as a rule
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  if (text.substr(0, 1) == "+") text.remove_prefix(1);
  if (base == 16 && text.substr(0, 2) == "0x") text.remove_prefix(2);
  long number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number, base);
  return result.ec == std::errc::result_out_of_range || number > std::numeric_limits<int>::max() ||
         number < std::numeric_limits<int>::min();
}

std::string CutNumber(std::string_view text, int base) {
  return fmt::format("{} is too large a number: taken as {}", text,
                     icescript::ParseNumber(text, base));
}

}  // namespace icehost
