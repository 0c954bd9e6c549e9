// Files that a run would both read and write, or write twice.
#ifndef ICESCRIPT_HOST_SHARED_FILES_H_
#define ICESCRIPT_HOST_SHARED_FILES_H_

#include "host/commands.h"

namespace icehost {

// Throws std::invalid_argument, which names the option and the other use of its file. Opens
// nothing.
void RefuseSharedFiles(const RunCommand& command);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SHARED_FILES_H_
