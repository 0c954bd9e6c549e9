#include "base/gpio_line_parser.h"

#include "base/field_cursor.h"
#include "base/number.h"
#include "base/text.h"
#include "entry/icescript.h"

namespace icescript {
namespace {

struct Pin {
  std::string_view name;
  int bit;
};

// In the order in which they are looked for, the busiest first.
constexpr Pin kPins[] = {
    {"TCK", GPIO_PIN_TCK}, {"TMS", GPIO_PIN_TMS},   {"TDI", GPIO_PIN_TDI},
    {"TDO", GPIO_PIN_TDO}, {"NRST", GPIO_PIN_NRST}, {"TRST", GPIO_PIN_TRST},
};

// Base 16 after "0x", base 10 otherwise; "0X" starts no hexadecimal number.
int ItemNumber(std::string_view value) {
  return ParseNumber(value, value.substr(0, 2) == "0x" ? 16 : 10);
}

}  // namespace

GpioItem::GpioItem(std::string_view text) {
  FieldCursor parts(text, '=');
  const std::string_view before = parts.Next();
  // "=x" has no key to cut off: the whole item is the key then.
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
  for (const Pin& pin : kPins) {
    if (EqualsUpper(item.key, pin.name)) return SetPin(pin.bit);
  }
  if (EqualsUpper(item.key, "GPIO_OUT")) return SetWord(element_.out_value, GPIO_FLAG_WRITE_OUT);
  if (EqualsUpper(item.key, "GPIO_OE")) return SetWord(element_.oe_mask, GPIO_FLAG_WRITE_OE);
  if (EqualsUpper(item.key, "PRINT")) return SetPrint(item.value);
  return ApplyDirective(item);
}

GpioLineParser::Result GpioLineParser::SetPin(int bit) {
  if (number_ != 0 && number_ != 1) return Result::kSyntaxError;
  if (number_ == 1) {
    element_.out_value |= bit;
  } else {
    element_.out_value &= GPIO_PIN_ALL & ~bit;  // clears the bits above the pins as well
  }
  // Deliberate: releasing the reset forgets what the line asked for before.
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

GpioLineParser::Result GpioLineParser::ApplyDirective(const GpioItem& item) {
  if (EqualsUpper(item.key, "END")) {
    element_.flags |= GPIO_FLAG_END;
    return Result::kEnd;
  }
  if (alone_ && EqualsUpper(item.key, "REPT") && number_ >= 1) {
    element_.kind = GPIO_KIND_REPT;
    element_.repeat_count = number_;
    return Result::kLine;
  }
  if (alone_ && EqualsUpper(item.key, "ENDR")) {
    element_.kind = GPIO_KIND_ENDR;
    return Result::kLine;
  }
  return Result::kSyntaxError;
}

}  // namespace icescript
