// One line of a GPIO script after START.
#ifndef ICESCRIPT_BASE_GPIO_LINE_PARSER_H_
#define ICESCRIPT_BASE_GPIO_LINE_PARSER_H_

#include <string_view>

#include "base/ini_file.h"

namespace icescript {

// One item of a line: KEY=VALUE, or a lone word that is both key and value. Both trimmed.
struct GpioItem {
  explicit GpioItem(std::string_view text);

  std::string_view key;
  std::string_view value;
};

// Turns lines into table elements, one a line. One parser serves a whole file: an empty value takes
// the number of the last item that had one, in whatever line.
class GpioLineParser {
 public:
  enum class Result { kLine, kEnd, kSyntaxError, kBadWord };

  // Parses a line whose pin state starts as `previous` left it. Afterwards Element() is the line's
  // element (kLine, kEnd) or BadItem() the item that was refused (kSyntaxError, kBadWord).
  Result Parse(std::string_view line, const CIniFile::gpio_element& previous);

  const CIniFile::gpio_element& Element() const { return element_; }
  // As it stands between the commas, blanks included.
  std::string_view BadItem() const { return item_; }

 private:
  Result Apply(const GpioItem& item);
  Result SetPin(int bit);
  Result SetWord(int& word, int flag);
  Result SetPrint(std::string_view what);
  Result SetBlock(int kind, int repeat_count);

  CIniFile::gpio_element element_{};
  bool alone_ = false;  // the line has one item
  std::string_view item_;
  int number_ = -1;  // of the last item that had a value
};

}  // namespace icescript

#endif  // ICESCRIPT_BASE_GPIO_LINE_PARSER_H_
