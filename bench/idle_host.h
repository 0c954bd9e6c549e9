// A host that does nothing. In every pin read TDO is high and all other pins are low.
#ifndef ICESCRIPT_BENCH_IDLE_HOST_H_
#define ICESCRIPT_BENCH_IDLE_HOST_H_

#include "entry/icescript.h"

#pragma GCC visibility push(default)

// Results of all pin operations: 0 (success) and -1 (failure). A LinkHandle points to one of them.
extern int idle_runs;
extern int idle_stops;

// A PrintCallback that prints nothing.
int DropMessage(const char* message);

#pragma GCC visibility pop

#endif  // ICESCRIPT_BENCH_IDLE_HOST_H_
