#ifndef ICESCRIPT_GPIO_GPIO_LOOP_H_
#define ICESCRIPT_GPIO_GPIO_LOOP_H_

#include "gpio/gpio_scr.h"

namespace icescript {

// Executes a list: calls link_gpio_operator for every pin operation, repeats the blocks, and prints
// every read. Reads are numbered from 0, and the numbering continues in later scripts until the
// plug-in is unloaded. Returns true at the end of the list, or false at the first negative result.
// `first` may be null. Every REPT and ENDR must be paired. The loop changes the repeat counts of
// the nodes, and the host changes their data words.
bool RunGpioOperators(LinkHandle handle, PrintCallback print, GpioOperatorData* first);

}  // namespace icescript

#endif  // ICESCRIPT_GPIO_GPIO_LOOP_H_
