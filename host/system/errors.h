// The exceptions that end a call, a script or the run.
#ifndef ICESCRIPT_HOST_SYSTEM_ERRORS_H_
#define ICESCRIPT_HOST_SYSTEM_ERRORS_H_

#include <stdexcept>

namespace icehost {

// The command line cannot be carried out. The run ends with kBadUsage.
class BadUsage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Something cannot be opened, or a connection is lost. The run ends with kNotOpened.
class IoError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The system has no descriptor or memory left, which says nothing about the file that is named. The
// run ends with kNotOpened.
class OutOfResources : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The probe cannot do what the script asks for. The call fails; the plug-in ends the script.
class Unsupported : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The plug-in threw an exception. The script has failed.
class PluginThrew : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The user pressed Ctrl-C, or a signal ended the program. The run ends with kInterrupted.
class Interrupted : public std::runtime_error {
 public:
  Interrupted() : std::runtime_error("interrupted") {}
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_ERRORS_H_
