// The items of a line of a GPIO script: warnings about them, and why the plug-in refuses an item.
#ifndef ICESCRIPT_HOST_CHECK_GPIO_ITEMS_H_
#define ICESCRIPT_HOST_CHECK_GPIO_ITEMS_H_

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/check/problems.h"
#include "host/check/script_text.h"

namespace icehost {

// The pins in the order of their bits, then the other keys.
enum ItemKey : unsigned {
  kNrst = 0,
  kTdo = 5,
  kPinKeys,  // the number of pins
  kOut = kPinKeys,
  kOe,
  kPrint,
  kRept,
  kEndr,
  kEnd,
  kOther
};
// Returns the names of pins (GPIO_PIN_ bits) as text, such as "NRST or TRST".
std::string PinNames(int pins);

// An item of a line: the text between two commas, to which the views refer.
struct NamedItem {
  explicit NamedItem(std::string_view field);

  bool IsPin() const { return which < kPinKeys; }
  bool TakesNumber() const { return which < kPrint || which == kRept; }
  int Base() const { return value.substr(0, 2) == "0x" ? 16 : 10; }

  std::string_view key;
  std::string_view value;  // empty if there is no "="
  bool has_equals;
  unsigned which;  // an ItemKey
};

// A line after START. It is split into items only if they are needed. Most lines of a long script
// repeat recent lines, so their items are not needed.
class GpioLine {
 public:
  // Makes `line` the current line. Its text must outlive this object.
  void Take(const ScriptLine& line);
  const ScriptLine& Source() const { return source_; }

  // Returns the place of the last item with this key, or of the line's text if there is none.
  Place PlaceOf(unsigned key);
  // Returns whether an item has the key REPT or ENDR, correct or misspelt.
  bool NamesBlock();
  // Returns the reason why the plug-in's parser refused the item `field`, a part of the line's
  // text. The reason says what is allowed, and what the author probably meant.
  std::string WhyRefused(std::string_view field);
  // Warns about items that probably do not do what the author meant. `flags` are the GPIO_FLAG_
  // bits of the parsed line. Returns the pins that the line sets by name (GPIO_PIN_ bits).
  int Check(int flags, Problems& problems);

 private:
  // A recent line without a warning.
  struct Clean {
    std::string_view text;
    int named = 0;
  };

  const std::vector<NamedItem>& Items();
  int CheckItems(int flags, Problems& problems);

  ScriptLine source_{0, ""};
  std::vector<NamedItem> items_;  // of the current line if `split_`
  bool split_ = false;
  std::array<Clean, 8> clean_;
  std::size_t next_clean_ = 0;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_GPIO_ITEMS_H_
