// Files that would be both read and written, or written twice.
#ifndef ICESCRIPT_HOST_OPTIONS_SHARED_FILES_H_
#define ICESCRIPT_HOST_OPTIONS_SHARED_FILES_H_

#include "host/options/commands.h"

namespace icehost {

// Throws std::invalid_argument, which names the option and the other use of its file. Opens
// nothing.
void RefuseSharedFiles(const RunCommand& command);
void RefuseSharedFiles(const CheckCommand& command);
void RefuseSharedFiles(const ImportCommand& command);
void RefuseSharedFiles(const ServeCommand& command);

bool IsOnStandardOutput(const RunCommand& command);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OPTIONS_SHARED_FILES_H_
