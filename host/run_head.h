// What stands at the head of a run's page.
#ifndef ICESCRIPT_HOST_RUN_HEAD_H_
#define ICESCRIPT_HOST_RUN_HEAD_H_

#include <string>

#include "host/options/commands.h"
#include "host/options/exit_status.h"
#include "host/record/page_writer.h"

namespace icehost {

// Of a run that ends now, with this status, after so many seconds. `counts` says what was done.
PageHead RunHead(const RunCommand& command, ExitStatus status, const std::string& counts,
                 double seconds);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RUN_HEAD_H_
