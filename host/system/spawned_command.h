// A command that runs beside icehost, such as the server that a probe connects to.
#ifndef ICESCRIPT_HOST_SYSTEM_SPAWNED_COMMAND_H_
#define ICESCRIPT_HOST_SYSTEM_SPAWNED_COMMAND_H_

#include <sys/types.h>

#include <chrono>
#include <string>
#include <utility>

#include "host/system/output_file.h"

namespace icehost {

// A guard, which is a process of its own, starts the command and ends it. It does so however
// icehost ends, even by SIGKILL. The command runs in a process group of its own, so Ctrl-C in the
// terminal reaches icehost only.
class SpawnedCommand {
 public:
  explicit SpawnedCommand(std::string command) : command_(std::move(command)) {}
  // Ends the command without showing anything of its output.
  ~SpawnedCommand();
  SpawnedCommand(const SpawnedCommand&) = delete;
  SpawnedCommand& operator=(const SpawnedCommand&) = delete;

  // Makes Start begin this file, for the output of the command. Otherwise only the end of the
  // output is kept, in memory.
  void LogTo(OutputFile& log) { log_ = &log; }
  // Lets /bin/sh run the command, which has nothing to read. Throws IoError.
  void Start();
  // Returns whether the command has ended by itself. Nothing of its process group is left then.
  bool HasEnded();
  // Ends the process group by SIGTERM, and two seconds later by SIGKILL, and waits for that. Shows
  // the end of the output if the run has `failed`. Returns false, and says so, if processes may be
  // left. Does nothing if the command is not running.
  bool End(bool failed);

 private:
  void Fork(int nothing, int output);
  bool HasEndedWithin(std::chrono::milliseconds patience);
  void ShowOutput() const;

  std::string command_;
  OutputFile* log_ = nullptr;
  int kept_ = -1;    // the output, if it can be read again
  pid_t guard_ = 0;  // 0: not started, or ended
  bool ended_ = false;
  int status_ = 0;  // of the guard
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_SPAWNED_COMMAND_H_
