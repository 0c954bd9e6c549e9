// The GPIO script reader of CIniFile.
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string_view>

#include "base/ini_file.h"
#include "base/line_reader.h"
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

bool IsSectionTag(std::string_view line) {
  return line == "[ORVEX_ICE_GPIO]" || line == "[ZEVA_ICE_GPIO]";
}

// Walks the lines of a file that are not blank.
class LineCursor {
 public:
  explicit LineCursor(std::istream& is) : is_(is) {}

  // Goes to the next line that is not blank; false when the file has no more.
  bool Next() {
    do {
      text_ = TrimBlanks(ReadLine(is_, buffer_));
      if (!is_) return false;
      ++number_;
    } while (text_.empty());
    return true;
  }

  std::string_view Text() const { return text_; }
  // From 1, blank lines counted.
  int Number() const { return static_cast<int>(number_); }

 private:
  std::istream& is_;
  char buffer_[INI_LINE_BUFFER] = "";
  std::string_view text_;     // in buffer_
  std::uint32_t number_ = 0;  // unsigned: a file may have more lines than an int counts
};

// One item of a line: KEY=VALUE, or a lone word that is both key and value.
struct Item {
  explicit Item(std::string_view text) {
    const std::size_t equals = text.find('=');
    // "=x" has no key to cut off: the whole item is the key then.
    key = TrimBlanks(equals != 0 ? text.substr(0, equals) : text);
    value = TrimBlanks(equals != std::string_view::npos ? text.substr(equals + 1) : text);
  }

  bool KeyIs(std::string_view name) const { return EqualsUpper(key, name); }

  std::string_view key;
  std::string_view value;
};

// Base 16 after "0x", base 10 otherwise; "0X" starts no hexadecimal number.
int ItemNumber(std::string_view value) {
  return ParseNumber(value, value.substr(0, 2) == "0x" ? 16 : 10);
}

// Turns the lines after START into table elements, one a line.
class GpioLineParser {
 public:
  enum class Result { kLine, kEnd, kSyntaxError, kBadWord };

  // Parses a line whose pin state starts as `previous` left it. Afterwards Element() is the line's
  // element (kLine, kEnd) or BadItem() the item that was refused (kSyntaxError, kBadWord).
  Result Parse(std::string_view line, const CIniFile::gpio_element& previous) {
    element_ = {previous.out_value, previous.oe_mask, 0, GPIO_KIND_PIN, 0};
    std::size_t comma = line.find(',');
    alone_ = comma == std::string_view::npos;
    for (;;) {
      item_ = line.substr(0, comma);
      const Result result = Apply(Item(item_));
      if (result != Result::kLine || comma == std::string_view::npos) return result;
      line.remove_prefix(comma + 1);
      comma = line.find(',');
    }
  }

  const CIniFile::gpio_element& Element() const { return element_; }
  // As it stands between the commas, blanks included.
  std::string_view BadItem() const { return item_; }

 private:
  Result Apply(const Item& item) {
    if (!item.value.empty()) number_ = ItemNumber(item.value);
    for (const Pin& pin : kPins) {
      if (item.KeyIs(pin.name)) return SetPin(pin.bit);
    }
    if (item.KeyIs("GPIO_OUT")) return SetWord(element_.out_value, GPIO_FLAG_WRITE_OUT);
    if (item.KeyIs("GPIO_OE")) return SetWord(element_.oe_mask, GPIO_FLAG_WRITE_OE);
    if (item.KeyIs("PRINT")) return SetPrint(item.value);
    return ApplyDirective(item);
  }

  Result SetPin(int bit) {
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

  Result SetWord(int& word, int flag) {
    if (number_ == -1) return Result::kBadWord;
    word = number_;
    element_.flags |= flag;
    return Result::kLine;
  }

  Result SetPrint(std::string_view what) {
    if (what != "GPIO_IN") return Result::kSyntaxError;
    element_.flags |= GPIO_FLAG_READ_IN;
    return Result::kLine;
  }

  Result ApplyDirective(const Item& item) {
    if (item.KeyIs("END")) {
      element_.flags |= GPIO_FLAG_END;
      return Result::kEnd;
    }
    if (alone_ && item.KeyIs("REPT") && number_ >= 1) {
      element_.kind = GPIO_KIND_REPT;
      element_.repeat_count = number_;
      return Result::kLine;
    }
    if (alone_ && item.KeyIs("ENDR")) {
      element_.kind = GPIO_KIND_ENDR;
      return Result::kLine;
    }
    return Result::kSyntaxError;
  }

  CIniFile::gpio_element element_{};
  bool alone_ = false;  // the line has one item
  std::string_view item_;
  // The number of the last item that had a value, anywhere before: an empty value repeats it.
  int number_ = -1;
};

}  // namespace

int CIniFile::ReadGpioFile() {
  std::ifstream file(path.Text());
  if (!file) {
    std::snprintf(error_msg, sizeof error_msg, "Unable to open Script file: %s.\n",
                  path.Text().c_str());
    return GPIO_READ_OPEN_FAILED;
  }
  const auto fail = [this](const char* message) {
    std::snprintf(error_msg, sizeof error_msg, "%s", message);
    return GPIO_READ_SYNTAX_ERROR;
  };
  LineCursor lines(file);
  if (!lines.Next()) return fail("Syntax error, no end found");
  if (!IsSectionTag(lines.Text())) return GPIO_READ_NOT_GPIO;
  if (!lines.Next()) return fail("Syntax error, no end found");
  if (!EqualsUpper(lines.Text(), "START")) {
    return fail("Syntax error: no start found.");
  }
  gpio_elements.push_back({0, GPIO_PIN_ALL, GPIO_FLAG_START, GPIO_KIND_PIN, 0});

  GpioLineParser parser;
  while (lines.Next()) {
    const auto result = parser.Parse(lines.Text(), gpio_elements.back());
    if (result == GpioLineParser::Result::kLine || result == GpioLineParser::Result::kEnd) {
      gpio_elements.push_back(parser.Element());
      if (result == GpioLineParser::Result::kEnd) return GPIO_READ_OK;
      continue;
    }
    std::snprintf(error_msg, sizeof error_msg,
                  result == GpioLineParser::Result::kBadWord ? "Syntax error in line%d : %s.\n"
                                                             : "Syntax error in line%d : %s",
                  lines.Number(), std::string(parser.BadItem()).c_str());
    return GPIO_READ_SYNTAX_ERROR;
  }
  return fail("Syntax error, no end found");
}

int CIniFile::RefuseGpioValue(const char* message) {
  std::snprintf(error_msg, sizeof error_msg, "%s", message);
  return -1;
}

}  // namespace icescript
