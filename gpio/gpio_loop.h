// The execution of a GPIO script.
#ifndef ICESCRIPT_GPIO_GPIO_LOOP_H_
#define ICESCRIPT_GPIO_GPIO_LOOP_H_

#include "gpio/gpio_scr.h"

namespace icescript {

// Hands every pin operation of the list, repeat blocks repeated, to link_gpio_operator and reports
// every read through `print` under a number that runs on for as long as the plug-in stays loaded.
// Stops at the first negative result; false then, true at the end of the list.
//
// `first` may be null; every REPT and ENDR must be paired. Counts down and reloads the nodes'
// repeat counts, and lets the host write their data words.
bool RunGpioOperators(LinkHandle handle, PrintCallback print, GpioOperatorData* first);

}  // namespace icescript

#endif  // ICESCRIPT_GPIO_GPIO_LOOP_H_
