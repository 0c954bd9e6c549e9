#include "base/number.h"

#include <charconv>
#include <limits>

namespace icescript {
namespace {

// What isspace accepts in the C locale.
bool IsSpace(char ch) {
  return ch == ' ' || (ch >= '\t' && ch <= '\r');
}

bool IsHexPrefix(std::string_view text) {
  return text.size() >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

}  // namespace

int ParseNumber(std::string_view text, int base) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  const bool negative = !text.empty() && text.front() == '-';
  if (negative || (!text.empty() && text.front() == '+')) text.remove_prefix(1);
  if (base == 16 && IsHexPrefix(text)) text.remove_prefix(2);

  unsigned long magnitude = 0;  // unsigned: no second sign is taken
  const auto end = std::from_chars(text.data(), text.data() + text.size(), magnitude, base);
  constexpr unsigned long kLargest = std::numeric_limits<long>::max();
  if (end.ec == std::errc::result_out_of_range || magnitude > kLargest) return negative ? 0 : -1;
  return static_cast<int>(negative ? 0 - magnitude : magnitude);
}

}  // namespace icescript
