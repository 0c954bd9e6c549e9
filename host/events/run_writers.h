// The outputs of a run that are text.
#ifndef ICESCRIPT_HOST_EVENTS_RUN_WRITERS_H_
#define ICESCRIPT_HOST_EVENTS_RUN_WRITERS_H_

#include <memory>
#include <ostream>

#include "host/events/output.h"

namespace icehost {

// Writes a readable line for each host call.
std::unique_ptr<Output> MakeTrace(std::ostream& stream);
// Writes everything that happens as JSON lines, for programs.
std::unique_ptr<Output> MakeJson(std::ostream& stream);
// Writes the results of scripts and of their parts as JUnit XML, for CI servers, at the end.
std::unique_ptr<Output> MakeJUnit(std::ostream& stream);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_RUN_WRITERS_H_
