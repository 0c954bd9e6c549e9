// Levels of a GPIO script that come to nothing, and TDO, which is the target's to drive.
#ifndef ICESCRIPT_HOST_CHECK_GPIO_PINS_H_
#define ICESCRIPT_HOST_CHECK_GPIO_PINS_H_

#include <array>
#include <vector>

#include "base/ini_file.h"
#include "entry/icescript.h"
#include "host/check/problems.h"

namespace icehost {

// Takes the lines of a script one by one.
class GpioPins {
 public:
  explicit GpioPins(Problems& problems) : problems_(problems) {}

  // `named`: the pins that the line sets by name.
  void Take(const ScriptLine& line, const icescript::CIniFile::gpio_element& element, int named);
  // There are no more lines.
  void Finish();

 private:
  // Levels that reach no pin unless one of these is enabled later.
  struct Idle {
    Place place;
    int pins;
  };

  void Enable(const ScriptLine& line, int enables);
  void CloseBlock();
  void SetIdle(const ScriptLine& line, int named, int changed);
  void CheckTdo(const ScriptLine& line, int flags, int named, int changed);

  Problems& problems_;
  int levels_ = 0;
  int enables_ = GPIO_PIN_ALL;       // as the probe has them
  bool tdo_told_ = false;            // since TDO is driven
  std::array<int, 6> enabled_at_{};  // the last line that enables the pin
  std::vector<Idle> idle_;
  std::vector<int> blocks_;  // lines of the open REPTs
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_GPIO_PINS_H_
