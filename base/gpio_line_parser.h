#ifndef ICESCRIPT_BASE_GPIO_LINE_PARSER_H_
#define ICESCRIPT_BASE_GPIO_LINE_PARSER_H_

#include <string_view>

#include "base/ini_file.h"

namespace icescript {

// One item of a line: KEY=VALUE, or a single word that is both key and value. Key and value are
// trimmed views of the text.
struct GpioItem {
  explicit GpioItem(std::string_view text);

  std::string_view key;
  std::string_view value;
};

// Turns each line after START into a gpio_element. One parser must read the whole file, because an
// item with an empty value gets the number of the last item that had a value, on any line.
class GpioLineParser {
 public:
  enum class Result { kLine, kEnd, kSyntaxError, kBadWord };

  // Parses a line. `previous` contains the pin state before it. The result is kEnd if the line
  // contains END, and kBadWord if it sets GPIO_OUT or GPIO_OE to -1. After kLine or kEnd, Element()
  // is the element of the line. After kSyntaxError or kBadWord, BadItem() is the wrong item.
  Result Parse(std::string_view line, const CIniFile::gpio_element& previous);

  const CIniFile::gpio_element& Element() const { return element_; }
  // The wrong item, including its blanks, as a view of the parsed line.
  std::string_view BadItem() const { return item_; }

 private:
  Result Apply(const GpioItem& item);
  Result SetPin(int bit);
  Result SetWord(int& word, int flag);
  Result SetPrint(std::string_view what);
  Result SetBlock(int kind, int repeat_count);

  CIniFile::gpio_element element_{};
  bool alone_ = false;  // whether the line has only one item
  std::string_view item_;
  int number_ = -1;  // the number of the last item that had a value
};

}  // namespace icescript

#endif  // ICESCRIPT_BASE_GPIO_LINE_PARSER_H_
