// What stands at the head of a page.
#ifndef ICESCRIPT_HOST_PAGE_HEAD_H_
#define ICESCRIPT_HOST_PAGE_HEAD_H_

#include <cstddef>
#include <string>

#include "host/options/commands.h"
#include "host/options/exit_status.h"
#include "host/page/page_writer.h"

namespace icehost {

// How a run ends, now.
struct RunEnd {
  ExitStatus status;
  std::size_t begun;   // of its scripts
  std::string counts;  // what was done
  double seconds;
};

PageHead RunHead(const RunCommand& command, const RunEnd& end);

// How serving ends, now.
struct ServeEnd {
  std::string served;  // the endpoint, as a client names it
  std::string error;   // why; empty for a signal
  std::string counts;
  double seconds;
};

PageHead ServeHead(const ServeCommand& command, const ServeEnd& end);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PAGE_HEAD_H_
