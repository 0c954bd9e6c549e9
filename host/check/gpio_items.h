// The items of one line of a GPIO script, by their keys.
#ifndef ICESCRIPT_HOST_CHECK_GPIO_ITEMS_H_
#define ICESCRIPT_HOST_CHECK_GPIO_ITEMS_H_

#include <string_view>
#include <vector>

#include "host/check/near_words.h"
#include "host/check/script_text.h"

namespace icehost {

// The pins in the order of their bits, then the other keys.
enum ItemKey : unsigned {
  kNrst = 0,
  kTdo = 5,
  kPins,  // how many there are
  kOut = kPins,
  kOe,
  kPrint,
  kRept,
  kEndr,
  kEnd,
  kOther
};
const Words& ItemKeys();

struct NamedItem {
  // What stands between two commas.
  explicit NamedItem(std::string_view field);

  bool IsPin() const { return which < kPins; }
  bool TakesNumber() const { return which < kPrint || which == kRept; }
  // Of the number.
  int Base() const { return value.substr(0, 2) == "0x" ? 16 : 10; }

  std::string_view key;
  std::string_view value;  // empty without "="
  bool has_equals;
  unsigned which;  // an ItemKey
};

std::vector<NamedItem> ItemsOf(std::string_view text);

// Of the last item with this key, or of the line's text where there is none.
Place PlaceOfKey(const ScriptLine& line, unsigned which);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_GPIO_ITEMS_H_
