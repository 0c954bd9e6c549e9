#ifndef ICESCRIPT_JTAG_JTAG_LOOP_H_
#define ICESCRIPT_JTAG_JTAG_LOOP_H_

#include "jtag/jtag_scr.h"

namespace icescript {

// Executes the operations of the list with the host's link functions. Prints a line for every
// operation that succeeds, and the registers of a scan in hexadecimal. Returns true at the end of
// the list, or false, without a message, at the first call that fails. `first` may be null. Run a
// list only once, because scans over the 2-wire interface change it.
bool RunJtagOperators(LinkHandle handle, PrintCallback print, JtagOperatorData* first);

}  // namespace icescript

#endif  // ICESCRIPT_JTAG_JTAG_LOOP_H_
