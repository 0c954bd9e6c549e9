#include "host/check/check_items.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "base/field_cursor.h"
#include "base/gpio_line_parser.h"
#include "base/text.h"
#include "entry/icescript.h"

namespace icehost {
namespace {

using icescript::EqualsUpper;

constexpr std::string_view kNumberKeys[] = {"NRST", "TRST", "TCK",      "TMS",    "TDI",
                                            "TDO",  "REPT", "GPIO_OUT", "GPIO_OE"};

bool TakesNumber(std::string_view key) {
  return std::any_of(std::begin(kNumberKeys), std::end(kNumberKeys),
                     [key](std::string_view name) { return EqualsUpper(key, name); });
}

struct Item {
  std::string_view key;
  std::string_view value;
  bool has_equals;
};

std::vector<Item> Items(std::string_view text) {
  std::vector<Item> items;
  for (icescript::FieldCursor fields(text, ','); fields.HasNext();) {
    const std::string_view field = fields.Next();
    const icescript::GpioItem item(field);
    const bool has_equals = field.find('=') != std::string_view::npos;
    items.push_back({item.key, has_equals ? item.value : "", has_equals});
  }
  return items;
}

// As the reader converts it: decimal, or hexadecimal behind "0x".
bool IsNumber(std::string_view text) {
  if (text.substr(0, 1) == "-" || text.substr(0, 1) == "+") text.remove_prefix(1);
  const bool hex = text.size() > 2 && text.substr(0, 2) == "0x";
  if (hex) text.remove_prefix(2);
  const char* const digits = hex ? "0123456789abcdefABCDEF" : "0123456789";
  return !text.empty() && text.find_first_not_of(digits) == std::string_view::npos;
}

void CheckValue(const ScriptLine& line, const Item& item, Problems& problems) {
  const Place place = line.Of(item.key);
  if (!TakesNumber(item.key)) return;
  if (!item.has_equals) {
    problems.Warn(place, "without \"=\" this is set to 0");
  } else if (item.value.empty()) {
    problems.Warn(place, "an empty value takes the number of the last item that had one");
  } else if (!IsNumber(item.value)) {
    problems.Warn(place,
                  fmt::format("\"{}\" is no number: only what it begins with counts", item.value));
  }
}

}  // namespace

Place PlaceOfKey(const ScriptLine& line, std::string_view key) {
  Place place = line.Start();
  for (const Item& item : Items(line.text)) {
    if (EqualsUpper(item.key, key)) place = line.Of(item.key);
  }
  return place;
}

bool NamesBlock(const ScriptLine& line) {
  const std::vector<Item> items = Items(line.text);
  return std::any_of(items.begin(), items.end(), [](const Item& item) {
    return EqualsUpper(item.key, "REPT") || EqualsUpper(item.key, "ENDR");
  });
}

void CheckItems(const ScriptLine& line, int flags, Problems& problems) {
  const std::vector<Item> items = Items(line.text);
  int asked = 0;
  for (std::size_t i = 0; i < items.size(); ++i) {
    const Item& item = items[i];
    if (EqualsUpper(item.key, "END")) {
      if (i + 1 < items.size()) {
        problems.Warn(line.Of(items[i + 1].key), "text after END is not read");
      }
      return;
    }
    CheckValue(line, item, problems);
    if (EqualsUpper(item.key, "PRINT")) asked |= GPIO_FLAG_READ_IN;
    if (EqualsUpper(item.key, "GPIO_OE")) asked |= GPIO_FLAG_WRITE_OE;
    if (EqualsUpper(item.key, "NRST") && (asked & ~flags) != 0) {
      problems.Warn(line.Of(item.key), "NRST=1 undoes the PRINT or GPIO_OE before it on the line");
      asked = 0;
    }
  }
}

}  // namespace icehost
