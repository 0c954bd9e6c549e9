#include "host/check/gpio_items.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/field_cursor.h"
#include "base/gpio_line_parser.h"
#include "base/number.h"
#include "base/text.h"
#include "entry/icescript.h"
#include "host/check/hints.h"

namespace icehost {
namespace {

using icescript::EqualsUpper;

constexpr std::string_view kItemKeys[] = {"NRST",     "TRST",    "TCK",   "TMS",  "TDI",  "TDO",
                                          "GPIO_OUT", "GPIO_OE", "PRINT", "REPT", "ENDR", "END"};
constexpr const char* kEmptyValue =
    "the value is empty: the plug-in reuses the last number it read";

// ---- Values that are legal but rarely intended

// Returns whether the whole text is a number in this base. For base 16, skips a "0x" prefix.
bool IsNumber(std::string_view text, int base) {
  text = text.substr(0, text.find_last_not_of(" \t") + 1);
  if (base == 16) {
    text.remove_prefix(2);
  } else {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    if (text.substr(0, 1) == "-" || text.substr(0, 1) == "+") text.remove_prefix(1);
  }
  return IsDigits(text, base);
}

// Returns a hint about the number that a wrong value was probably meant to be.
std::string NumberMeant(const NamedItem& item) {
  if (const auto slip = SlipIn(item.value); !slip.empty()) return std::string(slip);
  if (item.IsPin()) return fmt::format("{} must be 0 or 1", item.key);
  std::string_view digits = item.value;
  if (digits.substr(0, 2) == "0X") digits.remove_prefix(2);
  return IsDigits(digits, 16) ? DidYouMean(fmt::format("0x{}", digits)) : "";
}

void CheckValue(const ScriptLine& line, const NamedItem& item, Problems& problems) {
  if (!item.TakesNumber()) return;
  const std::string_view digits = item.value.substr(item.Base() == 16 ? 2 : 0);
  if (digits.size() < 8 && IsDigits(digits, item.Base())) return;  // the usual case
  const Place place = line.Of(item.key);
  if (!item.has_equals) {
    problems.Warn(place, "without \"=\", the plug-in reads the value as 0");
  } else if (item.value.empty()) {
    problems.Warn(place, kEmptyValue);
  } else if (!IsNumber(item.value, item.Base())) {
    problems.Warn(place, fmt::format("\"{}\" is not a number: the plug-in reads it as {}{}",
                                     item.value, icescript::ParseNumber(item.value, item.Base()),
                                     InParentheses(NumberMeant(item))));
  } else if (std::string cut = CutNumber(item.value, item.Base()); !cut.empty()) {
    problems.Warn(line.Of(item.value), std::move(cut));
  }
}

// Reports an item that replaces earlier items of the line. `set` has a bit for each key set so far.
void CheckAgain(const ScriptLine& line, const NamedItem& item, unsigned set, Problems& problems) {
  if (item.which > kOe) return;
  if ((set >> item.which & 1U) != 0) {
    problems.Warn(
        line.Of(item.key),
        fmt::format("a line is one operation, so only the last {} takes effect", item.key));
  } else if (item.which == kOut && (set & GPIO_PIN_ALL) != 0) {
    problems.Warn(line.Of(item.key), "GPIO_OUT replaces the levels set before it on this line");
  }
}

// ---- Items that the plug-in refuses

// Returns the item that an unknown item was probably meant to be.
std::string ItemMeant(const NamedItem& item) {
  if (!item.has_equals) {
    const Words with_value(kItemKeys, kItemKeys + kEndr);
    if (std::string whole = WithEquals(item.key, with_value); !whole.empty()) return whole;
  }
  if (EqualsUpper(item.key, "GPIO_IN")) return "PRINT=GPIO_IN";
  const std::string_view key = item.key;
  const std::size_t first = key.find_first_not_of("\t ");
  if (first == std::string_view::npos) return {};
  return Nearest(key.substr(first, key.find_last_not_of("\t ") + 1 - first),
                 Words(std::begin(kItemKeys), std::end(kItemKeys)));
}

std::string WhyUnknown(const NamedItem& item) {
  if (EqualsUpper(item.key, "START")) return "START may occur only once, after the section tag";
  const std::string_view slip = SlipIn(item.key);
  const std::string meant = DidYouMean(ItemMeant(item));
  if (!slip.empty()) return fmt::format("{}{}{}", slip, meant.empty() ? "" : ": ", meant);
  if (!meant.empty()) return "unknown item: " + meant;
  return "unknown item: expected " +
         Listed(Words(std::begin(kItemKeys), std::end(kItemKeys)), "or");
}

std::string WhyNotPrint(const NamedItem& item) {
  if (EqualsUpper(item.value, "GPIO_IN")) return "GPIO_IN must be in upper case";
  const std::string_view slip = SlipIn(item.value);
  return fmt::format("{}{}PRINT must be GPIO_IN, in upper case", slip, slip.empty() ? "" : "; ");
}

// Returns a description of the numbers that a key accepts.
std::string Range(const NamedItem& item) {
  if (item.which == kRept) return "REPT must be from 1 to 2147483647";
  const std::string_view key = kItemKeys[item.which];
  return item.IsPin() ? fmt::format("{} must be 0 or 1", key)
                      : fmt::format("{} must be from 0 to 0x3F", key);
}

std::string WhyNotNumber(const NamedItem& item) {
  if (!item.has_equals) return "without \"=\", the value is 0; " + Range(item);
  if (item.value.empty()) return fmt::format("{}; {}", Range(item), kEmptyValue);
  const std::string cut = CutNumber(item.value, item.Base());
  return cut + (cut.empty() ? "" : "; ") + Range(item);
}

}  // namespace

std::string PinNames(int pins) {
  Words names;
  for (unsigned pin = 0; pin < kPinKeys; ++pin) {
    if ((pins & 1 << pin) != 0) names.push_back(kItemKeys[pin]);
  }
  return Listed(names, "or");
}

NamedItem::NamedItem(std::string_view field) : which(0) {
  const icescript::GpioItem item(field);
  key = item.key;
  has_equals = field.find('=') != std::string_view::npos;
  if (has_equals) value = item.value;
  while (which < kOther && !EqualsUpper(key, kItemKeys[which])) ++which;
}

void GpioLine::Take(const ScriptLine& line) {
  source_ = line;
  split_ = false;
}

const std::vector<NamedItem>& GpioLine::Items() {
  if (std::exchange(split_, true)) return items_;
  items_.clear();
  for (icescript::FieldCursor fields(source_.text, ','); fields.HasNext();) {
    items_.emplace_back(fields.Next());
  }
  return items_;
}

Place GpioLine::PlaceOf(unsigned key) {
  const std::vector<NamedItem>& items = Items();
  const auto item = std::find_if(items.rbegin(), items.rend(),
                                 [key](const NamedItem& one) { return one.which == key; });
  return item != items.rend() ? source_.Of(item->key) : source_.Start();
}

bool GpioLine::NamesBlock() {
  const Words blocks = {"REPT", "ENDR"};
  return std::any_of(Items().begin(), Items().end(), [&blocks](const NamedItem& item) {
    return item.which == kRept || item.which == kEndr ||
           (item.which == kOther &&
            (!Nearest(item.key, blocks).empty() || !WithEquals(item.key, blocks).empty()));
  });
}

std::string GpioLine::WhyRefused(std::string_view field) {
  const NamedItem item(field);
  const auto end = static_cast<std::size_t>(field.data() + field.size() - source_.text.data());
  if (FindForeignComment(source_.text.substr(0, end)) != std::string_view::npos) {
    return "comments start with #";
  }
  if (item.key.empty()) return "an item is missing, or there is one comma too many";
  if (item.which == kOther) return WhyUnknown(item);
  if (item.which == kPrint) return WhyNotPrint(item);
  if (Items().size() > 1 && (item.which == kRept || item.which == kEndr)) {
    return fmt::format("{} must be alone on its line", kItemKeys[item.which]);
  }
  return WhyNotNumber(item);
}

int GpioLine::Check(int flags, Problems& problems) {
  for (const Clean& line : clean_) {
    if (line.text == source_.text) return line.named;
  }
  const std::size_t before = problems.Found().size();
  const int named = CheckItems(flags, problems);
  if (problems.Found().size() == before) {
    clean_[next_clean_++ % clean_.size()] = {source_.text, named};
  }
  return named;
}

int GpioLine::CheckItems(int flags, Problems& problems) {
  const std::vector<NamedItem>& items = Items();
  unsigned set = 0;
  int asked = 0;
  for (auto item = items.begin(); item != items.end(); ++item) {
    if (item->which == kEnd) {
      if (++item != items.end())
        problems.Warn(source_.Of(item->key), "the plug-in ignores text after END");
      break;
    }
    CheckValue(source_, *item, problems);
    CheckAgain(source_, *item, set, problems);
    set |= 1U << item->which;
    if (item->which == kPrint) asked |= GPIO_FLAG_READ_IN;
    if (item->which == kOe) asked |= GPIO_FLAG_WRITE_OE;
    if (item->which == kNrst && (asked & ~flags) != 0) {
      problems.Warn(
          source_.Of(item->key),
          "NRST=1 cancels the PRINT or GPIO_OE before it on this line: write NRST=1 first");
      asked = 0;
    }
  }
  return static_cast<int>(set) & GPIO_PIN_ALL;
}

}  // namespace icehost
