#ifndef ICESCRIPT_BASE_PRINT_LINE_H_
#define ICESCRIPT_BASE_PRINT_LINE_H_

#include <charconv>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <system_error>

#include "base/text.h"

namespace icescript {

// Composes a message of at most PRINT_LINE_BUFFER - 1 bytes. Skips a piece that does not fit.
class PrintLine {
 public:
  PrintLine& operator<<(std::string_view piece) {
    if (piece.size() < sizeof text_ - size_) size_ += piece.copy(text_ + size_, piece.size());
    return *this;
  }

  PrintLine& operator<<(int number) {
    const auto [end, error] = std::to_chars(text_ + size_, std::end(text_) - 1, number);
    if (error == std::errc()) size_ = static_cast<std::size_t>(end - text_);
    return *this;
  }

  // Appends the number in decimal, with leading spaces up to a width of three.
  PrintLine& Aligned(int number) {
    if (number > -10 && number < 100) *this << " ";
    if (number >= 0 && number < 10) *this << " ";
    return *this << number;
  }

  // Appends the number in hexadecimal, with eight digits.
  PrintLine& Hex(std::uint32_t number) {
    char digits[8];
    for (char* at = std::end(digits); at != digits; number >>= 4) *--at = HexDigit(number & 0xF);
    return *this << std::string_view(digits, sizeof digits);
  }

  // Returns the text, which is valid until the line changes.
  const char* Text() {
    text_[size_] = '\0';
    return text_;
  }

 private:
  char text_[PRINT_LINE_BUFFER];
  std::size_t size_ = 0;
};

}  // namespace icescript

#endif  // ICESCRIPT_BASE_PRINT_LINE_H_
