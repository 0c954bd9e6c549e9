// The repeat blocks of a GPIO script.
#ifndef ICESCRIPT_HOST_CHECK_GPIO_BLOCKS_H_
#define ICESCRIPT_HOST_CHECK_GPIO_BLOCKS_H_

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
    bool empty = true;  // so far it holds no pin operation
  };

  void Close(const ScriptLine& endr);

  std::vector<Open> open_;
  Problems problems_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_GPIO_BLOCKS_H_
