// A host that does nothing. In every pin read TDO is high and all other pins are low.
#ifndef ICESCRIPT_BENCH_IDLE_HOST_H_
#define ICESCRIPT_BENCH_IDLE_HOST_H_

#include "entry/icescript.h"

#pragma GCC visibility push(default)

// A LinkHandle points to one of these, the result of every pin operation: 0, or -1 for failure.
extern int idle_runs;
extern int idle_stops;

// A PrintCallback that prints nothing.
int DropMessage(const char* message);

#pragma GCC visibility pop

#endif  // ICESCRIPT_BENCH_IDLE_HOST_H_
