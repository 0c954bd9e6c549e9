// The outputs of a run that are text. Each writes to `stream`, which must outlive the output.
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
// Writes the results of the scripts and their parts as JUnit XML for CI servers when the run ends.
std::unique_ptr<Output> MakeJUnit(std::ostream& stream);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_RUN_WRITERS_H_
