#ifndef ICESCRIPT_HOST_SYSTEM_SPAWNED_COMMAND_H_
#define ICESCRIPT_HOST_SYSTEM_SPAWNED_COMMAND_H_

#include <sys/types.h>

#include <chrono>
#include <string>
#include <utility>

#include "host/system/output_file.h"

namespace icehost {

// A command that runs beside icehost, such as the server of a probe. A separate process, the guard,
// starts the command, and ends it when icehost ends or is killed. The command has its own process
// group, so Ctrl-C reaches only icehost.
class SpawnedCommand {
 public:
  explicit SpawnedCommand(std::string command) : command_(std::move(command)) {}
  // Ends the command without showing its output.
  ~SpawnedCommand();
  SpawnedCommand(const SpawnedCommand&) = delete;
  SpawnedCommand& operator=(const SpawnedCommand&) = delete;

  // Makes Start begin `log`, which must exist until then, and send the command's output to it.
  // Without this call, only the end of the output is kept, in memory.
  void LogTo(OutputFile& log) { log_ = &log; }
  // Starts the command with /bin/sh and an empty standard input. Throws IoError.
  void Start();
  // Returns whether the command has ended by itself and left no process in its group.
  bool HasEnded();
  // Ends the process group with SIGTERM, and two seconds later with SIGKILL, and waits for its end.
  // If `failed`, shows the end of the output. If processes may remain, reports this and returns
  // false. Does nothing before Start and after the first End.
  bool End(bool failed);

 private:
  void Fork(int nothing, int output);
  bool HasEndedWithin(std::chrono::milliseconds patience);
  void ShowOutput() const;

  std::string command_;
  OutputFile* log_ = nullptr;
  int kept_ = -1;    // the descriptor of the output; -1 if the output cannot be read again
  pid_t guard_ = 0;  // the process id of the guard; 0 if it was not started or has ended
  bool ended_ = false;
  int status_ = 0;  // of the guard, from waitpid
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_SPAWNED_COMMAND_H_
