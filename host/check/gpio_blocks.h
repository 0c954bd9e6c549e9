// The repeat blocks of a GPIO script.
#ifndef ICESCRIPT_HOST_CHECK_GPIO_BLOCKS_H_
#define ICESCRIPT_HOST_CHECK_GPIO_BLOCKS_H_

#include <optional>
#include <vector>

#include "base/ini_file.h"
#include "host/check/problems.h"

namespace icehost {

// Takes the lines of a script one by one.
class GpioBlocks {
 public:
  void Take(const ScriptLine& line, const icescript::CIniFile::gpio_element& element);
  // There are no more lines. All problems; to be called once.
  Problems Finish();

 private:
  struct Open {
    Place rept;
    // The block's first line: the REPT itself carries the levels from before the block.
    std::optional<icescript::CIniFile::gpio_element> first;
    bool idle = true;  // so far nothing changes from one run to the next, and nothing is read
  };

  void Close(const ScriptLine& endr);

  std::vector<Open> open_;
  Problems problems_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_GPIO_BLOCKS_H_
