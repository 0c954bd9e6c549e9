// The run put together.
#ifndef ICESCRIPT_HOST_RUNNER_H_
#define ICESCRIPT_HOST_RUNNER_H_

#include <cstddef>
#include <string>
#include <vector>

#include "host/events/follower.h"
#include "host/events/observed_probe.h"
#include "host/load_scripts.h"
#include "host/options/commands.h"
#include "host/options/exit_status.h"
#include "host/probe/plugin.h"
#include "host/probe_stack.h"
#include "host/reporter.h"
#include "host/tables/outputs.h"
#include "host/work_lock.h"

namespace icehost {

// Plays scripts one after the other. Only one at a time.
class Runner {
 public:
  // Loads the plug-in, and opens the probe and the outputs; throws IoError where one cannot be.
  explicit Runner(const RunCommand& command);
  ~Runner();
  Runner(const Runner&) = delete;
  Runner& operator=(const Runner&) = delete;

  // Completes what it writes however that ends. What ended it has been said.
  ExitStatus RunAll(std::vector<Script> scripts);

 private:
  ExitStatus RunOne(Script& script);
  // Whether the plug-in ran it to its end.
  bool Play(Script& script);
  bool RunPlugin(const std::string& path);
  ExitStatus Judge(const Script& script, bool ran);
  ExitStatus WriteLearned(const Script& script);
  // Empty where it did not.
  std::string WhyFailed(const Script& script) const;
  ExitStatus Complete(ExitStatus status);
  // In place of Complete, where that is not reached. False while the main thread is at work.
  bool Abandon();

  static int Show(const char* message);
  void OnCall(bool begins_operation);
  void OnDoubt(const std::string& why);
  // Why the call under way fails; or else the script.
  void SayOfCall(const std::string& why);
  void Summarise(const std::string& script);
  void TellSource(Script& script);
  PageHead Head(ExitStatus status) const;
  std::string Counts() const;

  static Runner* running;  // callbacks carry no handle

  const RunCommand& command_;
  WorkLock work_;
  Plugin plugin_;
  ProbeStack stack_;
  Outputs outputs_;
  OutputFile* learned_ = nullptr;  // of the outputs'
  Reporter reporter_;
  Follower follower_;
  ObservedProbe observed_;
  std::size_t begun_ = 0;   // scripts
  bool doubted_ = false;    // in this script
  bool ran_ = false;        // this script, to its end
  bool explained_ = false;  // why it fails
  std::string summary_;     // what became of the expectations
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RUNNER_H_
