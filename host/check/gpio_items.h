// The items of one line of a GPIO script: the traps in them, and why the plug-in refuses one.
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
  kPinKeys,  // how many there are
  kOut = kPinKeys,
  kOe,
  kPrint,
  kRept,
  kEndr,
  kEnd,
  kOther
};
// Pins as text: "NRST or TRST". `pins` are GPIO_PIN_ bits.
std::string PinNames(int pins);

// The text between two commas.
struct NamedItem {
  explicit NamedItem(std::string_view field);

  bool IsPin() const { return which < kPinKeys; }
  bool TakesNumber() const { return which < kPrint || which == kRept; }
  // The base of the number.
  int Base() const { return value.substr(0, 2) == "0x" ? 16 : 10; }

  std::string_view key;
  std::string_view value;  // empty without "="
  bool has_equals;
  unsigned which;  // an ItemKey
};

// A line after START. It is split at its commas once, when its items are first asked for: most
// lines of a long script are known, and their items are not.
class GpioLine {
 public:
  // Takes another line.
  void Take(const ScriptLine& line);
  const ScriptLine& Source() const { return source_; }

  // The place of the last item with this key, or of the line's text if there is none.
  Place PlaceOf(unsigned key);
  // Whether an item has the key REPT or ENDR, or nearly so.
  bool NamesBlock();
  // Explains why the plug-in's parser refused an item, `field` in the line's text: what is allowed,
  // and what was probably meant.
  std::string WhyRefused(std::string_view field);
  // Reports the traps of a line to which the plug-in gave the flags `flags`. Returns the pins that
  // it sets by name, GPIO_PIN_ bits.
  int Check(int flags, Problems& problems);

 private:
  // The last few lines without a trap: a long script is made of few.
  struct Clean {
    std::string_view text;
    int flags = 0;
    int named = 0;
  };

  const std::vector<NamedItem>& Items();
  int CheckItems(int flags, Problems& problems);

  ScriptLine source_{0, ""};
  std::vector<NamedItem> items_;  // of the source if `split_`
  bool split_ = false;
  std::array<Clean, 8> clean_;
  std::size_t next_clean_ = 0;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_GPIO_ITEMS_H_
