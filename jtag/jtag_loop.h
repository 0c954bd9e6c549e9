// The loop that executes a JTAG script.
#ifndef ICESCRIPT_JTAG_JTAG_LOOP_H_
#define ICESCRIPT_JTAG_JTAG_LOOP_H_

#include "jtag/jtag_scr.h"

namespace icescript {

// Executes the operations of the list with the host's link functions. Prints a line for every
// operation that succeeds, and the registers of a scan in hexadecimal. Returns false at the first
// call that fails, without a message, or true at the end of the list.
//
// `first` may be null. Run a list only once: scans over the 2-wire interface change its records.
bool RunJtagOperators(LinkHandle handle, PrintCallback print, JtagOperatorData* first);

}  // namespace icescript

#endif  // ICESCRIPT_JTAG_JTAG_LOOP_H_
