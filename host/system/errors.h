// The exceptions that end a host call, a script or the run.
#ifndef ICESCRIPT_HOST_SYSTEM_ERRORS_H_
#define ICESCRIPT_HOST_SYSTEM_ERRORS_H_

#include <stdexcept>

namespace icehost {

// The command line cannot be executed. The run ends with kBadUsage.
class BadUsage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Something cannot be opened, read or written, or a connection is lost. The run ends with
// kNotOpened, or with kScriptFailed if an input file cannot be read.
class IoError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The system has no descriptor or memory left for a file. The run ends with kNotOpened.
class OutOfResources : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The probe does not support a call. The call fails, and the plug-in ends the script.
class Unsupported : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The plug-in threw an exception. The script counts as failed.
class PluginThrew : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A signal, such as Ctrl-C, ends the program. The run ends with kInterrupted.
class Interrupted : public std::runtime_error {
 public:
  Interrupted() : std::runtime_error("interrupted") {}
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_ERRORS_H_
