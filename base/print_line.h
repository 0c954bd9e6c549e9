// One line of progress, put together piece by piece.
#ifndef ICESCRIPT_BASE_PRINT_LINE_H_
#define ICESCRIPT_BASE_PRINT_LINE_H_

#include <algorithm>
#include <charconv>
#include <string_view>

#include "base/text.h"

namespace icescript {

// Takes PRINT_LINE_BUFFER - 1 bytes; what comes after them is cut.
class PrintLine {
 public:
  PrintLine& operator<<(std::string_view piece) {
    size_ += piece.copy(text_ + size_, sizeof text_ - 1 - size_);
    return *this;
  }

  PrintLine& operator<<(int number) { return Number(number, 0); }

  // In decimal, with spaces on the left up to `width`, which is at most 3.
  PrintLine& Number(int number, std::size_t width) {
    char digits[16];
    const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    const auto count = static_cast<std::size_t>(end - digits);
    *this << std::string_view("   ", width - std::min(width, count));
    return *this << std::string_view(digits, count);
  }

  // Valid until the line changes.
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
