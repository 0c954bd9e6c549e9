#include "host/check/explain_item.h"

#include <fmt/format.h>

#include "base/text.h"
#include "host/check/gpio_items.h"
#include "host/check/near_words.h"
#include "host/check/remarks.h"
#include "host/check/wide_numbers.h"

namespace icehost {
namespace {

// What an item of no known key was meant to be.
std::string ItemMeant(const NamedItem& item) {
  if (!item.has_equals) {
    const Words with_value(ItemKeys().begin(), ItemKeys().begin() + kEndr);
    if (std::string whole = WithEquals(item.key, with_value); !whole.empty()) return whole;
  }
  if (icescript::EqualsUpper(item.key, "GPIO_IN")) return "PRINT=GPIO_IN";
  const std::string_view key = item.key;
  const std::size_t first = key.find_first_not_of("\t ");
  if (first == std::string_view::npos) return {};
  return Nearest(key.substr(first, key.find_last_not_of("\t ") + 1 - first), ItemKeys());
}

std::string WhyUnknown(const NamedItem& item) {
  if (icescript::EqualsUpper(item.key, "START")) return "START stands once, below the section tag";
  const std::string_view slip = SlipIn(item.key);
  const std::string meant = DidYouMean(ItemMeant(item));
  if (!slip.empty()) return fmt::format("{}{}{}", slip, meant.empty() ? "" : ": ", meant);
  return fmt::format("no such item{} {}", meant.empty() ? "; the items are" : ":",
                     meant.empty() ? Listed(ItemKeys(), "and") : meant);
}

std::string WhyNoPrint(const NamedItem& item) {
  if (icescript::EqualsUpper(item.value, "GPIO_IN")) return "GPIO_IN is in upper case";
  const std::string_view slip = SlipIn(item.value);
  return fmt::format("{}{}PRINT takes GPIO_IN alone, in upper case", slip,
                     slip.empty() ? "" : "; ");
}

// What a key takes.
std::string Range(const NamedItem& item) {
  if (item.which == kRept) return "REPT takes a count from 1 to 2147483647";
  const std::string_view key = ItemKeys()[item.which];
  return item.IsPin() ? fmt::format("{} is 0 or 1", key) : fmt::format("{} is 0 to 0x3F", key);
}

std::string WhyNoNumber(const NamedItem& item) {
  if (!item.has_equals || IsCutNumber(item.value, item.Base())) {
    return fmt::format(
        "{}; {}", item.has_equals ? CutNumber(item.value, item.Base()) : "without \"=\" it is 0",
        Range(item));
  }
  if (item.value.empty()) {
    return Range(item) + "; an empty value takes the number of the last item that had one";
  }
  return Range(item);
}

}  // namespace

std::string WhyRefused(std::string_view field, std::string_view line) {
  const NamedItem item(field);
  const auto end = static_cast<std::size_t>(field.data() + field.size() - line.data());
  if (FindForeignComment(line.substr(0, end)) != std::string_view::npos) {
    return "comments start with #";
  }
  if (item.key.empty()) return "there is a comma too many, or an item is missing";
  if (item.which == kOther) return WhyUnknown(item);
  if (item.which == kPrint) return WhyNoPrint(item);
  const bool alone = field.size() == line.size();
  if (!alone && (item.which == kRept || item.which == kEndr)) {
    return fmt::format("{} stands alone on its line", ItemKeys()[item.which]);
  }
  return WhyNoNumber(item);
}

}  // namespace icehost
