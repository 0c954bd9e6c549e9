#include "host/check/gpio_items.h"

#include <iterator>

#include "base/field_cursor.h"
#include "base/gpio_line_parser.h"
#include "base/text.h"

namespace icehost {
namespace {

constexpr std::string_view kItemKeys[] = {"NRST",     "TRST",    "TCK",   "TMS",  "TDI",  "TDO",
                                          "GPIO_OUT", "GPIO_OE", "PRINT", "REPT", "ENDR", "END"};

}  // namespace

const Words& ItemKeys() {
  static const Words keys(std::begin(kItemKeys), std::end(kItemKeys));
  return keys;
}

NamedItem::NamedItem(std::string_view field)
    : has_equals(field.find('=') != std::string_view::npos), which(0) {
  const icescript::GpioItem item(field);
  key = item.key;
  if (has_equals) value = item.value;
  while (which < kOther && !icescript::EqualsUpper(key, kItemKeys[which])) ++which;
}

std::vector<NamedItem> ItemsOf(std::string_view text) {
  std::vector<NamedItem> items;
  for (icescript::FieldCursor fields(text, ','); fields.HasNext();) {
    items.emplace_back(fields.Next());
  }
  return items;
}

Place PlaceOfKey(const ScriptLine& line, unsigned which) {
  Place place = line.Start();
  for (const NamedItem& item : ItemsOf(line.text)) {
    if (item.which == which) place = line.Of(item.key);
  }
  return place;
}

}  // namespace icehost
