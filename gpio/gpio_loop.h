// The loop that executes a GPIO script.
#ifndef ICESCRIPT_GPIO_GPIO_LOOP_H_
#define ICESCRIPT_GPIO_GPIO_LOOP_H_

#include "gpio/gpio_scr.h"

namespace icescript {

// Calls link_gpio_operator for every pin operation of the list, as often as its repeat blocks say,
// and prints every read. Reads are numbered from 0 until the plug-in is unloaded. Returns false at
// the first negative result, or true at the end of the list.
//
// `first` may be null. Every REPT and ENDR must be paired. The loop changes the repeat counts of
// the nodes, and the host changes their data words.
bool RunGpioOperators(LinkHandle handle, PrintCallback print, GpioOperatorData* first);

}  // namespace icescript

#endif  // ICESCRIPT_GPIO_GPIO_LOOP_H_
