// The execution of a JTAG script.
#ifndef ICESCRIPT_JTAG_JTAG_LOOP_H_
#define ICESCRIPT_JTAG_JTAG_LOOP_H_

#include "jtag/jtag_scr.h"

namespace icescript {

// Runs the list against the host's link functions and prints a line for every operation that
// succeeded, with hexadecimal dumps for a scan. Stops at the first failing call without a word;
// false then, true at the end of the list.
//
// `first` may be null. The scans of a 2-wire interface are rewritten in place, so a list is run
// once.
bool RunJtagOperators(LinkHandle handle, PrintCallback print, JtagOperatorData* first);

}  // namespace icescript

#endif  // ICESCRIPT_JTAG_JTAG_LOOP_H_
