// A command that runs beside icehost, such as the server of a probe.
#ifndef ICESCRIPT_HOST_SYSTEM_SPAWNED_COMMAND_H_
#define ICESCRIPT_HOST_SYSTEM_SPAWNED_COMMAND_H_

#include <sys/types.h>

#include <chrono>
#include <string>
#include <utility>

#include "host/system/output_file.h"

namespace icehost {

// A separate process, the guard, starts the command, and ends it when icehost ends, even if SIGKILL
// kills icehost. The command has its own process group, so Ctrl-C reaches only icehost.
class SpawnedCommand {
 public:
  explicit SpawnedCommand(std::string command) : command_(std::move(command)) {}
  // Ends the command without showing its output.
  ~SpawnedCommand();
  SpawnedCommand(const SpawnedCommand&) = delete;
  SpawnedCommand& operator=(const SpawnedCommand&) = delete;

  // Makes Start begin this file and write the command's output to it. Without a file, only the end
  // of the output is kept, in memory.
  void LogTo(OutputFile& log) { log_ = &log; }
  // Starts the command with /bin/sh and an empty standard input. Throws IoError.
  void Start();
  // Returns whether the command has ended by itself. No process of its group is left then.
  bool HasEnded();
  // Ends the process group with SIGTERM, and two seconds later with SIGKILL, and waits for its end.
  // Shows the end of the output if the run has `failed`. If processes may be left, reports that and
  // returns false. Does nothing before Start and after an earlier End.
  bool End(bool failed);

 private:
  void Fork(int nothing, int output);
  bool HasEndedWithin(std::chrono::milliseconds patience);
  void ShowOutput() const;

  std::string command_;
  OutputFile* log_ = nullptr;
  int kept_ = -1;    // descriptor of the output, or -1 if it cannot be read again
  pid_t guard_ = 0;  // its process id; 0: not started, or ended
  bool ended_ = false;
  int status_ = 0;  // of the guard, from waitpid
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_SPAWNED_COMMAND_H_
