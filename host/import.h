// The import verb.
#ifndef ICESCRIPT_HOST_IMPORT_H_
#define ICESCRIPT_HOST_IMPORT_H_

#include "host/options/commands.h"
#include "host/options/exit_status.h"

namespace icehost {

// Makes a JTAG script of a Serial Vector Format file. What is wrong is told on standard error, and
// then nothing is written. Throws Interrupted.
ExitStatus Import(const ImportCommand& command);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_IMPORT_H_
