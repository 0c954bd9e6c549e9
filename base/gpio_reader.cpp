#include <cstdint>
#include <cstdio>
#include <string_view>

#include "base/gpio_line_parser.h"
#include "base/ini_file.h"
#include "base/line_reader.h"
#include "base/text.h"
#include "entry/icescript.h"

namespace icescript {
namespace {

class LineCursor {
 public:
  explicit LineCursor(LineReader& lines) : lines_(lines) {}

  // Goes to the next line that is not blank. Returns false if there is none.
  bool Next() {
    do {
      if (!lines_.Next()) return false;
      text_ = TrimBlanks(lines_.Text());
      ++number_;
    } while (text_.empty());
    return true;
  }

  std::string_view Text() const { return text_; }
  // The number of the line in the file, counted from 1.
  int Number() const { return static_cast<int>(number_); }

 private:
  LineReader& lines_;
  std::string_view text_;
  std::uint32_t number_ = 0;  // unsigned because a file may have more than INT_MAX lines
};

}  // namespace

int CIniFile::ReadGpioFile() {
  LineReader file(path.Text());
  if (!IsReadable(file)) return GPIO_READ_OPEN_FAILED;
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
