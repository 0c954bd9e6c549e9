// The traps in one line of a GPIO script.
#ifndef ICESCRIPT_HOST_CHECK_CHECK_ITEMS_H_
#define ICESCRIPT_HOST_CHECK_CHECK_ITEMS_H_

#include "host/check/problems.h"

namespace icehost {

// Whether an item has the key REPT or ENDR.
bool NamesBlock(const ScriptLine& line);

// Reports the traps of a line to which the reader gave the flags `flags`. Returns the pins that it
// sets by name, GPIO_PIN_ bits.
int CheckItems(const ScriptLine& line, int flags, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_CHECK_ITEMS_H_
