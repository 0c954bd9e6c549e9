#include "host/check/check_items.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "base/field_cursor.h"
#include "entry/icescript.h"
#include "host/check/gpio_items.h"
#include "host/check/near_words.h"
#include "host/check/remarks.h"
#include "host/check/wide_numbers.h"

namespace icehost {
namespace {

constexpr const char* kHexDigits = "0123456789abcdefABCDEF";

// As the reader converts it: decimal, or hexadecimal behind "0x".
bool IsNumber(std::string_view text, int base) {
  text = text.substr(0, text.find_last_not_of(" \t") + 1);
  if (base == 16) {
    text.remove_prefix(2);
  } else {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    if (text.substr(0, 1) == "-" || text.substr(0, 1) == "+") text.remove_prefix(1);
  }
  const std::string_view digits(kHexDigits, base == 16 ? 22 : 10);
  return !text.empty() && text.find_first_not_of(digits) == std::string_view::npos;
}

// What a value that is no number may have been meant to be.
std::string NumberMeant(const NamedItem& item) {
  if (const auto slip = SlipIn(item.value); !slip.empty()) return std::string(slip);
  if (item.IsPin()) return fmt::format("{} is 0 or 1", item.key);
  std::string_view digits = item.value;
  if (digits.substr(0, 2) == "0X" || digits.substr(0, 2) == "0x") digits.remove_prefix(2);
  const bool hex =
      !digits.empty() && digits.find_first_not_of(kHexDigits) == std::string_view::npos;
  return hex ? DidYouMean(fmt::format("0x{}", digits)) : "";
}

void CheckValue(const ScriptLine& line, const NamedItem& item, Problems& problems) {
  if (!item.TakesNumber()) return;
  const Place place = line.Of(item.key);
  if (!item.has_equals) {
    problems.Warn(place, "without \"=\" this is set to 0");
  } else if (item.value.empty()) {
    problems.Warn(place, "an empty value takes the number of the last item that had one");
  } else if (!IsNumber(item.value, item.Base())) {
    problems.Warn(place, fmt::format("\"{}\" is no number: only what it begins with counts{}",
                                     item.value, InParentheses(NumberMeant(item))));
  } else if (IsCutNumber(item.value, item.Base())) {
    problems.Warn(line.Of(item.value), CutNumber(item.value, item.Base()));
  }
}

// What an item takes back of those before it, which set the keys `set`.
void CheckAgain(const ScriptLine& line, const NamedItem& item, unsigned set, Problems& problems) {
  if (item.which > kOe || set == 0) return;
  if ((set >> item.which & 1U) != 0) {
    problems.Warn(line.Of(item.key),
                  fmt::format("a line is one operation: of {} only the last counts", item.key));
  } else if (item.which == kOut && (set & GPIO_PIN_ALL) != 0) {
    problems.Warn(line.Of(item.key), "GPIO_OUT replaces what the line sets before it");
  }
}

}  // namespace

// Or nearly so.
bool NamesBlock(const ScriptLine& line) {
  const Words blocks = {"REPT", "ENDR"};
  const std::vector<NamedItem> items = ItemsOf(line.text);
  return std::any_of(items.begin(), items.end(), [&blocks](const NamedItem& item) {
    return item.which == kRept || item.which == kEndr ||
           (item.which == kOther &&
            (!Nearest(item.key, blocks).empty() || !WithEquals(item.key, blocks).empty()));
  });
}

int CheckItems(const ScriptLine& line, int flags, Problems& problems) {
  unsigned set = 0;
  int asked = 0;
  for (icescript::FieldCursor fields(line.text, ','); fields.HasNext();) {
    const NamedItem item(fields.Next());
    if (item.which == kEnd) {
      if (fields.HasNext()) {
        problems.Warn(line.Of(NamedItem(fields.Next()).key), "text after END is not read");
      }
      break;
    }
    CheckValue(line, item, problems);
    CheckAgain(line, item, set, problems);
    set |= 1U << item.which;
    if (item.which == kPrint) asked |= GPIO_FLAG_READ_IN;
    if (item.which == kOe) asked |= GPIO_FLAG_WRITE_OE;
    if (item.which == kNrst && (asked & ~flags) != 0) {
      problems.Warn(line.Of(item.key), "NRST=1 undoes the PRINT or GPIO_OE before it on the line");
      asked = 0;
    }
  }
  return static_cast<int>(set) & GPIO_PIN_ALL;
}

}  // namespace icehost
