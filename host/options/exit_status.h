// Exit statuses of icehost.
#ifndef ICESCRIPT_HOST_OPTIONS_EXIT_STATUS_H_
#define ICESCRIPT_HOST_OPTIONS_EXIT_STATUS_H_

namespace icehost {

enum ExitStatus : int {
  kAllWell = 0,
  kScriptFailed = 1,  // or has errors, or there is no sound chain of TAPs
  kBadUsage = 2,
  kNotOpened = 3,  // the plug-in, the endpoint or an output file; or the connection was lost
  kInterrupted = 130,
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OPTIONS_EXIT_STATUS_H_
