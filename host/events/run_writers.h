// The text outputs of a run. Each output writes to `stream`, which must outlive the output.
#ifndef ICESCRIPT_HOST_EVENTS_RUN_WRITERS_H_
#define ICESCRIPT_HOST_EVENTS_RUN_WRITERS_H_

#include <memory>
#include <ostream>

#include "host/events/output.h"

namespace icehost {

// Returns an output that writes a readable line for each host call.
std::unique_ptr<Output> MakeTrace(std::ostream& stream);
// Returns an output that writes all events as JSON lines, for programs.
std::unique_ptr<Output> MakeJson(std::ostream& stream);
// Returns an output that writes the results of scripts, sections and lines as JUnit XML at the end.
std::unique_ptr<Output> MakeJUnit(std::ostream& stream);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_RUN_WRITERS_H_
