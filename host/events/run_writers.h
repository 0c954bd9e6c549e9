// The text outputs of a run.
#ifndef ICESCRIPT_HOST_EVENTS_RUN_WRITERS_H_
#define ICESCRIPT_HOST_EVENTS_RUN_WRITERS_H_

#include <memory>
#include <ostream>

#include "host/events/output.h"

namespace icehost {

// Lines for people: one for each host call.
std::unique_ptr<Output> MakeTrace(std::ostream& stream);
// JSON lines for programs: everything that happens.
std::unique_ptr<Output> MakeJson(std::ostream& stream);
// JUnit XML for CI servers: the result of each script and of its parts, at the end.
std::unique_ptr<Output> MakeJUnit(std::ostream& stream);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_RUN_WRITERS_H_
