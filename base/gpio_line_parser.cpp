#include "base/gpio_line_parser.h"

#include <cstdint>

#include "base/field_cursor.h"
#include "base/number.h"
#include "base/text.h"
#include "entry/icescript.h"

namespace icescript {
namespace {

// Packs a word of up to eight characters, in upper case, into a number for a switch. Returns 0 for
// a longer word. Lines contain no NUL, so different words give different numbers.
constexpr std::uint64_t Word(std::string_view text) {
  std::uint64_t word = 0;
  if (text.size() > sizeof word) return word;
  for (const char ch : text) word = word << 8U | static_cast<unsigned char>(UpperCase(ch));
  return word;
}

// Returns the number at the beginning of `value`, which must not be empty. The number is
// hexadecimal after "0x" (but not "0X"), else decimal. The first two tests cover most values.
int ItemNumber(std::string_view value) {
  const char first = value.front();
  if (value.size() == 1 && first >= '0' && first <= '9') return first - '0';
  if (first > '9') return 0;
  return ParseNumber(value, value.substr(0, 2) == "0x" ? 16 : 10);
}

}  // namespace

GpioItem::GpioItem(std::string_view text) {
  FieldCursor parts(text, '=');
  const std::string_view before = parts.Next();
  // Without a key, as in "=x", the whole item is the key.
  key = TrimBlanks(before.empty() ? text : before);
  value = TrimBlanks(parts.HasNext() ? text.substr(before.size() + 1) : text);
}

GpioLineParser::Result GpioLineParser::Parse(std::string_view line,
                                             const CIniFile::gpio_element& previous) {
  element_ = {previous.out_value, previous.oe_mask, 0, GPIO_KIND_PIN, 0};
  Result result = Result::kLine;
  for (FieldCursor items(line, ','); result == Result::kLine && items.HasNext();) {
    item_ = items.Next();
    alone_ = item_.size() == line.size();
    result = Apply(GpioItem(item_));
  }
  return result;
}

GpioLineParser::Result GpioLineParser::Apply(const GpioItem& item) {
  if (!item.value.empty()) number_ = ItemNumber(item.value);
  switch (Word(item.key)) {
    case Word("NRST"):
      return SetPin(GPIO_PIN_NRST);
    case Word("TRST"):
      return SetPin(GPIO_PIN_TRST);
    case Word("TCK"):
      return SetPin(GPIO_PIN_TCK);
    case Word("TMS"):
      return SetPin(GPIO_PIN_TMS);
    case Word("TDI"):
      return SetPin(GPIO_PIN_TDI);
    case Word("TDO"):
      return SetPin(GPIO_PIN_TDO);
    case Word("GPIO_OUT"):
      return SetWord(element_.out_value, GPIO_FLAG_WRITE_OUT);
    case Word("GPIO_OE"):
      return SetWord(element_.oe_mask, GPIO_FLAG_WRITE_OE);
    case Word("PRINT"):
      return SetPrint(item.value);
    case Word("REPT"):
      return number_ >= 1 ? SetBlock(GPIO_KIND_REPT, number_) : Result::kSyntaxError;
    case Word("ENDR"):
      return SetBlock(GPIO_KIND_ENDR, 0);
    case Word("END"):
      element_.flags |= GPIO_FLAG_END;
      return Result::kEnd;
    default:
      return Result::kSyntaxError;
  }
}

GpioLineParser::Result GpioLineParser::SetPin(int bit) {
  if (number_ != 0 && number_ != 1) return Result::kSyntaxError;
  if (number_ == 1) {
    element_.out_value |= bit;
  } else {
    element_.out_value &= GPIO_PIN_ALL & ~bit;  // clears the bits above the pins as well
  }
  // NRST=1 deliberately drops the flags that earlier items of the line have set.
  if (bit == GPIO_PIN_NRST && number_ == 1) element_.flags = 0;
  element_.flags |= GPIO_FLAG_WRITE_OUT;
  return Result::kLine;
}

GpioLineParser::Result GpioLineParser::SetWord(int& word, int flag) {
  if (number_ == -1) return Result::kBadWord;
  word = number_;
  element_.flags |= flag;
  return Result::kLine;
}

GpioLineParser::Result GpioLineParser::SetPrint(std::string_view what) {
  if (what != "GPIO_IN") return Result::kSyntaxError;
  element_.flags |= GPIO_FLAG_READ_IN;
  return Result::kLine;
}

GpioLineParser::Result GpioLineParser::SetBlock(int kind, int repeat_count) {
  if (!alone_) return Result::kSyntaxError;
  element_.kind = kind;
  element_.repeat_count = repeat_count;
  return Result::kLine;
}

}  // namespace icescript
