#include "base/number.h"

#include <limits>

#include "base/text.h"

namespace icescript {
namespace {

// Does the same as isspace in the C locale.
bool IsSpace(char ch) {
  return ch == ' ' || (ch >= '\t' && ch <= '\r');
}

// Returns the value of a digit. Any other character has the value 36, too large for any base.
int DigitOf(char ch) {
  if (ch >= '0' && ch <= '9') return ch - '0';
  const char upper = UpperCase(ch);
  return upper >= 'A' && upper <= 'Z' ? upper - 'A' + 10 : 36;
}

bool IsHexPrefix(std::string_view text) {
  return text.size() >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

// Returns the number if the text consists of 1 to 7 digits, which always fit an int; else -1.
int PlainNumber(std::string_view text, int base) {
  if (text.empty() || text.size() > 7) return -1;
  int number = 0;
  for (const char ch : text) {
    const int digit = DigitOf(ch);
    if (digit >= base) return -1;
    number = number * base + digit;
  }
  return number;
}

}  // namespace

int ParseNumber(std::string_view text, int base) {
  if (const int plain = PlainNumber(text, base); plain >= 0) return plain;  // the usual case
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  const bool negative = !text.empty() && text.front() == '-';
  if (negative || (!text.empty() && text.front() == '+')) text.remove_prefix(1);
  if (base == 16 && IsHexPrefix(text)) text.remove_prefix(2);

  long magnitude = 0;
  for (const char ch : text) {
    const int digit = DigitOf(ch);
    if (digit >= base) break;
    if (magnitude > (std::numeric_limits<long>::max() - digit) / base) {
      return negative ? 0 : -1;  // the low 32 bits of the smallest and the largest long
    }
    magnitude = magnitude * base + digit;
  }
  return static_cast<int>(negative ? -magnitude : magnitude);
}

}  // namespace icescript
