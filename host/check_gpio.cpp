// What is wrong with a GPIO script.
#include <algorithm>
#include <optional>
#include <string_view>

#include "base/field_cursor.h"
#include "base/gpio_line_parser.h"
#include "base/ini_file.h"
#include "base/number.h"
#include "base/text.h"
#include "entry/icescript.h"
#include "host/check.h"
#include "host/memory_file.h"
#include "host/pin_names.h"

namespace icehost {
namespace {

using icescript::CIniFile;
using icescript::CString;
using icescript::EqualsUpper;

// More errors than this tell the user nothing new.
constexpr std::size_t kMostErrors = 100;

// The lines with text, in order: the tag, START, then one for each element of the reader's table.
std::vector<const ScriptLine*> TextLines(const ScriptText& script,
                                         const std::vector<int>& without) {
  std::vector<const ScriptLine*> lines;
  for (const ScriptLine& line : script.Lines()) {
    const bool left_out = std::find(without.begin(), without.end(), line.number) != without.end();
    if (!line.Blank() && !left_out) lines.push_back(&line);
  }
  return lines;
}

std::string WithoutLineBreak(std::string text) {
  while (!text.empty() && (text.back() == '\n' || text.back() == '.')) text.pop_back();
  return text;
}

// A message of the reader about a line: "Syntax error in line3 : TCK=2".
constexpr std::string_view kBeforeNumber = "Syntax error in line";
constexpr std::string_view kBeforeItem = " : ";

// The line that a message of the reader is about, or 0.
int LineNumber(std::string_view message) {
  if (message.substr(0, kBeforeNumber.size()) != kBeforeNumber) return 0;
  return icescript::ParseNumber(message.substr(kBeforeNumber.size()), 10);
}

// The line and column that a message of the reader is about.
void PlaceReaderError(const ScriptText& script, const std::string& message,
                      const std::vector<const ScriptLine*>& text_lines, Problems& problems) {
  if (const int number = LineNumber(message); number != 0) {
    const ScriptLine& line = script.Lines()[static_cast<std::size_t>(number) - 1];
    const std::string item = message.substr(message.find(kBeforeItem) + kBeforeItem.size());
    const std::size_t at = line.text.find(WithoutLineBreak(item));
    const std::size_t shown = at == std::string::npos ? 0 : line.text.find_first_not_of(' ', at);
    problems.Error(line, line.ColumnAt(std::min(shown, line.text.size())),
                   WithoutLineBreak(message));
    return;
  }
  // "no start": the second line with text is not START; "no end": the file ends.
  const bool no_start = message.find("no start") != std::string::npos;
  static const ScriptLine kEmptyFile{1, "", "", 1};
  const ScriptLine& line = no_start             ? *text_lines[1]
                           : text_lines.empty() ? kEmptyFile
                                                : *text_lines.back();
  problems.Error(line, line.column, WithoutLineBreak(message));
}

// Reads the script with the reader, leaves out the line that it refuses, and so on, until what is
// left is read; then `ini` holds its table. False when the table cannot be had.
bool ReadRepaired(const ScriptText& script, std::optional<CIniFile>& ini,
                  std::vector<int>& left_out, Problems& problems) {
  while (left_out.size() < kMostErrors) {
    const MemoryFile file(script.Without(left_out));
    ini.emplace(CString(file.Path()));
    if (ini->ReadGpioFile() == icescript::GPIO_READ_OK) return true;
    PlaceReaderError(script, ini->error_msg, TextLines(script, left_out), problems);
    const int number = LineNumber(ini->error_msg);
    if (number == 0) return true;  // no START, or no END: the table holds what there is
    left_out.push_back(number);
  }
  const ScriptLine& last = script.Lines()[static_cast<std::size_t>(left_out.back()) - 1];
  problems.Error(last, last.column, "too many errors: those after this line are not looked for");
  return false;
}

struct Element {
  const ScriptLine* line;
  int out_value;
  int oe_mask;
  int flags;
  int kind;
};

std::vector<Element> Elements(CIniFile& ini, const std::vector<const ScriptLine*>& text_lines) {
  std::vector<Element> elements;
  elements.reserve(ini.GetGpioNum());
  for (int i = 0; i < static_cast<int>(ini.GetGpioNum()); ++i) {
    elements.push_back({text_lines[static_cast<std::size_t>(i) + 1],
                        ini.GetGpioValue(i, icescript::GPIO_FIELD_OUT_VALUE),
                        ini.GetGpioValue(i, icescript::GPIO_FIELD_OE_MASK),
                        ini.GetGpioValue(i, icescript::GPIO_FIELD_FLAGS),
                        ini.GetGpioValue(i, icescript::GPIO_FIELD_KIND)});
  }
  return elements;
}

void CheckWords(const std::vector<Element>& elements, Problems& problems) {
  int high_bits_before = 0;
  for (const Element& element : elements) {
    const int high_bits = element.out_value & ~GPIO_PIN_ALL;
    const bool writes_out = (element.flags & GPIO_FLAG_WRITE_OUT) != 0;
    if (writes_out && element.out_value < 0) {
      problems.Error(*element.line, element.line->column,
                     "GPIO_OUT is negative: refused without a message");
    } else if (writes_out && high_bits != 0 && high_bits != high_bits_before) {
      problems.Warn(*element.line, element.line->column,
                    "GPIO_OUT has bits above the six pins, until a pin is cleared");
    }
    if ((element.flags & GPIO_FLAG_WRITE_OE) != 0 && element.oe_mask < 0) {
      problems.Error(*element.line, element.line->column, ",inifile.error (GPIO_OE is negative)");
    }
    high_bits_before = high_bits;
  }
}

// Whether nothing changes from one run of the block to the next, and nothing is read.
bool IsIdle(const Element* begin, const Element* end) {
  return std::all_of(begin, end, [begin](const Element& element) {
    return element.out_value == begin->out_value && element.oe_mask == begin->oe_mask &&
           (element.flags & GPIO_FLAG_READ_IN) == 0;
  });
}

void CheckBlocks(const std::vector<Element>& elements, Problems& problems) {
  std::vector<const Element*> open;
  for (const Element& element : elements) {
    if (element.kind == icescript::GPIO_KIND_REPT) open.push_back(&element);
    if (element.kind != icescript::GPIO_KIND_ENDR) continue;
    if (open.empty()) {
      problems.Error(*element.line, element.line->column,
                     "error: rept & endr not match. (no REPT is open)");
      continue;
    }
    // The REPT itself carries the levels from before the block.
    if (IsIdle(open.back() + 1, &element)) {
      problems.Warn(*open.back()->line, open.back()->line->column,
                    "no pin changes in this block and none is read");
    }
    open.pop_back();
  }
  for (const Element* const rept : open) {
    problems.Error(*rept->line, rept->line->column,
                   "syntax error: rept & endr not match. (this REPT has no ENDR)");
  }
}

bool IsPin(std::string_view key) {
  return std::any_of(std::begin(kPinNames), std::end(kPinNames),
                     [key](const char* name) { return EqualsUpper(key, name); });
}

struct Item {
  std::string_view key;
  std::string_view value;
  bool has_equals;
  std::size_t at;  // of the key in the line's text
};

std::vector<Item> Items(std::string_view text) {
  std::vector<Item> items;
  for (icescript::FieldCursor fields(text, ','); fields.HasNext();) {
    const std::string_view field = fields.Next();
    const icescript::GpioItem item(field);
    const bool has_equals = field.find('=') != std::string_view::npos;
    items.push_back({item.key, has_equals ? item.value : "", has_equals,
                     static_cast<std::size_t>(item.key.data() - text.data())});
  }
  return items;
}

// The traps of one line; true when it ends the script.
bool CheckItems(const ScriptLine& line, Problems& problems) {
  const std::vector<Item> items = Items(line.text);
  bool flag_before = false;
  for (std::size_t i = 0; i < items.size(); ++i) {
    const Item& item = items[i];
    const int column = line.ColumnAt(item.at);
    if (EqualsUpper(item.key, "END")) {
      if (i + 1 < items.size()) {
        problems.Warn(line, line.ColumnAt(items[i + 1].at), "text after END is not read");
      }
      return true;
    }
    if (IsPin(item.key) && !item.has_equals) {
      problems.Warn(line, column, "a pin without \"=\" is set to 0");
    }
    if (item.has_equals && item.value.empty() && !EqualsUpper(item.key, "ENDR")) {
      problems.Warn(line, column, "an empty value takes the number of the last item that had one");
    }
    if (EqualsUpper(item.key, "NRST") && item.value == "1" && flag_before) {
      problems.Warn(line, column, "NRST=1 undoes the PRINT or GPIO_OE before it on the line");
    }
    flag_before = flag_before || EqualsUpper(item.key, "PRINT") || EqualsUpper(item.key, "GPIO_OE");
  }
  return false;
}

}  // namespace

void CheckGpio(const ScriptText& script, Problems& problems) {
  std::vector<int> left_out;
  std::optional<CIniFile> ini;
  const bool read = ReadRepaired(script, ini, left_out, problems);
  const std::vector<const ScriptLine*> text_lines = TextLines(script, left_out);
  if (read) {
    const std::vector<Element> elements = Elements(*ini, text_lines);
    CheckWords(elements, problems);
    CheckBlocks(elements, problems);
  }
  bool ended = false;
  for (std::size_t i = 2; i < text_lines.size(); ++i) {
    if (ended) {
      problems.Warn(*text_lines[i], text_lines[i]->column, "text after END is not read");
      break;
    }
    ended = CheckItems(*text_lines[i], problems);
  }
}

}  // namespace icehost
