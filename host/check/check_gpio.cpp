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
#include "host/check/check.h"
#include "host/check/check_items.h"
#include "host/system/memory_file.h"

namespace icehost {
namespace {

using icescript::CIniFile;
using icescript::CString;

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

// The message without the line break, and the full stop before it, that one of the two forms ends
// in.
std::string WithoutLineBreak(std::string text) {
  if (text.size() >= 2 && text.compare(text.size() - 2, 2, ".\n") == 0)
    text.resize(text.size() - 2);
  return text;
}

// Where an item stands in a line's text; the beginning of the line where it is not found whole.
std::size_t FindItem(std::string_view text, std::string_view item) {
  for (icescript::FieldCursor fields(text, ','); fields.HasNext();) {
    const std::string_view field = fields.Next();
    if (field != item) continue;
    const std::size_t blanks = std::min(field.find_first_not_of(' '), field.size());
    return static_cast<std::size_t>(field.data() - text.data()) + blanks;
  }
  return 0;
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
    const std::string shown = WithoutLineBreak(message);
    const std::string item = shown.substr(shown.find(kBeforeItem) + kBeforeItem.size());
    problems.Error(line, line.ColumnAt(FindItem(line.text, item)), shown);
    return;
  }
  // "no start": the second line with text is not START; "no end": the file ends.
  const bool no_start = message.find("no start") != std::string::npos;
  static const ScriptLine kEmptyFile{1, "", "", 1};
  const ScriptLine& line = no_start             ? *text_lines[1]
                           : text_lines.empty() ? kEmptyFile
                                                : *text_lines.back();
  problems.Error(line, line.column, message);
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

// Reported where a word gets its value: the lines after it carry it on.
void CheckWords(const std::vector<Element>& elements, Problems& problems) {
  int out_before = 0;
  int oe_before = 0;
  for (const Element& element : elements) {
    const ScriptLine& line = *element.line;
    if (element.out_value < 0 && element.out_value != out_before) {
      problems.Error(line, ColumnOfKey(line, "GPIO_OUT"),
                     "GPIO_OUT is negative: refused without a message");
    } else if ((element.out_value & ~GPIO_PIN_ALL) != (out_before & ~GPIO_PIN_ALL) &&
               element.out_value > GPIO_PIN_ALL) {
      problems.Warn(line, ColumnOfKey(line, "GPIO_OUT"),
                    "GPIO_OUT has bits above the six pins, until a pin is cleared");
    }
    if (element.oe_mask < 0 && element.oe_mask != oe_before) {
      problems.Error(line, ColumnOfKey(line, "GPIO_OE"), ",inifile.error (GPIO_OE is negative)");
    }
    out_before = element.out_value;
    oe_before = element.oe_mask;
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

}  // namespace

void CheckGpio(const ScriptText& script, Problems& problems) {
  std::vector<int> left_out;
  std::optional<CIniFile> ini;
  const bool read = ReadRepaired(script, ini, left_out, problems);
  const std::vector<const ScriptLine*> text_lines = TextLines(script, left_out);
  if (read) {
    const std::vector<Element> elements = Elements(*ini, text_lines);
    CheckWords(elements, problems);
    // A refused REPT or ENDR leaves its partner alone: that is no second fault.
    const bool blocks_whole = std::none_of(left_out.begin(), left_out.end(), [&script](int number) {
      return NamesBlock(script.Lines()[static_cast<std::size_t>(number) - 1]);
    });
    if (blocks_whole) CheckBlocks(elements, problems);
  }
  bool ended = false;
  for (std::size_t i = 2; i < text_lines.size(); ++i) {
    if (ended) {
      problems.Warn(*text_lines[i], text_lines[i]->column, "text after END is not read");
      break;
    }
    // The table has the flags of every line that was read.
    const int flags = i - 1 < ini->GetGpioNum()
                          ? ini->GetGpioValue(static_cast<int>(i) - 1, icescript::GPIO_FIELD_FLAGS)
                          : ~0;
    ended = CheckItems(*text_lines[i], flags, problems);
  }
}

}  // namespace icehost
