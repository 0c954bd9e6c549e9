// What is wrong with a GPIO script.
#include <algorithm>
#include <vector>

#include "base/ini_file.h"
#include "entry/icescript.h"
#include "host/check/check.h"
#include "host/check/check_items.h"
#include "host/check/gpio_reading.h"

namespace icehost {
namespace {

using icescript::CIniFile;

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
  GpioReading reading = ReadGpio(script, problems);
  const std::vector<const ScriptLine*>& text_lines = reading.text_lines;
  if (reading.whole) {
    const std::vector<Element> elements = Elements(*reading.ini, text_lines);
    CheckWords(elements, problems);
    // A refused REPT or ENDR leaves its partner alone: that is no second fault.
    const bool blocks_whole =
        std::none_of(reading.left_out.begin(), reading.left_out.end(), [&script](int number) {
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
    const int element = static_cast<int>(i) - 1;
    const int flags = i - 1 < reading.ini->GetGpioNum()
                          ? reading.ini->GetGpioValue(element, icescript::GPIO_FIELD_FLAGS)
                          : ~0;
    ended = CheckItems(*text_lines[i], flags, problems);
  }
}

}  // namespace icehost
