// A host that does nothing; every pin read finds TDO high.
#ifndef ICESCRIPT_BENCH_IDLE_HOST_H_
#define ICESCRIPT_BENCH_IDLE_HOST_H_

#include "entry/icescript.h"

#pragma GCC visibility push(default)

// A LinkHandle points to the result of every pin operation: 0, or -1, which ends the script.
extern int idle_runs;
extern int idle_stops;

// A PrintCallback that shows nothing.
int DropMessage(const char* message);

#pragma GCC visibility pop

#endif  // ICESCRIPT_BENCH_IDLE_HOST_H_
