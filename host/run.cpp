#include "host/run.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>

#include "host/check/check.h"
#include "host/outputs.h"
#include "host/probe/plugin.h"
#include "host/probe_stack.h"
#include "host/progress.h"
#include "host/record/observed_probe.h"
#include "host/system/errors.h"
#include "host/system/memory_file.h"
#include "host/system/printable.h"

namespace icehost {
namespace {

void Complain(std::string what) {
  while (!what.empty() && what.back() == '\n') what.pop_back();
  std::fprintf(stderr, "icehost: %s\n", Printable(what).c_str());
}

// The plug-in reads a script twice, from a path: a pipe would be empty the second time.
bool IsRegularFile(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

class Runner {
 public:
  explicit Runner(const RunCommand& command)
      : command_(command),
        plugin_(LoadPlugin(command.plugin)),
        progress_(!command.quiet && command.trace != "-" && isatty(STDERR_FILENO) != 0),
        stack_(command),
        outputs_(command),
        observed_(
            stack_.Build(outputs_.recorders), outputs_.listeners,
            [this](const std::string& why) { Say(why); },
            [this](const std::string& operation) { OnOperation(operation); }) {
    running = this;
  }
  ~Runner() { running = nullptr; }
  Runner(const Runner&) = delete;
  Runner& operator=(const Runner&) = delete;

  ExitStatus RunAll() {
    ExitStatus status = kAllWell;
    for (const std::string& script : command_.scripts) {
      status = RunOne(script);
      if (status != kAllWell) break;
    }
    return Complete(status);
  }

 private:
  static Plugin LoadPlugin(const std::string& path) {
    try {
      return Plugin(path);
    } catch (const std::runtime_error& error) {
      throw IoError(std::string("cannot load the plug-in: ") + error.what());
    }
  }

  // Messages are shown as they stand: some are pieces of a line.
  static int Show(const char* message) {
    running->progress_.Erase();
    for (EventListener* const listener : running->outputs_.listeners) listener->OnMessage(message);
    running->last_message_ = message;
    if (std::fputs(message, stdout) == EOF) FailOutput();
    return 0;
  }

  // Nobody reads on: the rest of the script is not to run unseen.
  [[noreturn]] static void FailOutput() {
    throw IoError(std::string("standard output: ") + std::strerror(errno));
  }

  void Say(const std::string& what) {
    progress_.Erase();
    std::fflush(stdout);
    for (EventListener* const listener : outputs_.listeners) listener->OnError(what);
    Complain(what);
  }

  void OnOperation(const std::string& operation) {
    progress_.OnOperation();
    if (outputs_.svg.has_value()) {
      outputs_.svg->BeginOperation(stack_.Steps(), operation);
    }
  }

  ExitStatus RunOne(const std::string& script) {
    for (EventListener* const listener : outputs_.listeners) listener->OnScript(script);
    const ExitStatus status = Guarded(script);
    for (EventListener* const listener : outputs_.listeners) {
      listener->OnScriptEnd(status == kAllWell);
    }
    return status;
  }

  ExitStatus Guarded(const std::string& script) {
    try {
      std::optional<std::string> content = ReadContent(script);
      if (!content.has_value()) return kScriptFailed;
      return RunContent(script, std::move(*content));
    } catch (const Interrupted& error) {
      Say(error.what());
      return kInterrupted;
    } catch (const IoError& error) {
      Say(error.what());
      return kNotOpened;
    } catch (const PluginThrew& error) {
      Say(script + ": the plug-in threw an exception" + error.what());
      return kScriptFailed;
    }
  }

  // Nothing where it cannot be read, which has been said then.
  std::optional<std::string> ReadContent(const std::string& script) {
    try {
      return ReadScript(script);
    } catch (const IoError& error) {
      Say(error.what());
      return std::nullopt;
    }
  }

  // What the probe and the output throw passes through the plug-in as it is.
  bool RunPlugin(const std::string& path) {
    try {
      return plugin_.Run(observed_, path, Show);
    } catch (const Interrupted&) {
      throw;
    } catch (const IoError&) {
      throw;
    } catch (const std::exception& error) {
      throw PluginThrew(std::string(": ") + error.what());
    } catch (...) {
      throw PluginThrew("");
    }
  }

  ExitStatus RunContent(const std::string& script, std::string content) {
    std::optional<MemoryFile> copy;
    if (!IsRegularFile(script)) copy.emplace(content);
    const bool ran = RunPlugin(copy.has_value() ? copy->Path() : script);
    stack_.Flush();
    const ScriptText text(script, std::move(content));
    if (std::fflush(stdout) == EOF) FailOutput();
    if (!ran) {
      Say(script + " failed" + (command_.quiet ? ": " + last_message_ : ""));
      return kScriptFailed;
    }
    // The plug-in's result is 0 for a JTAG script with errors.
    if (!IsGpioScript(text) && Check(text).HasErrors()) {
      Say(script + " has errors; icehost check shows them");
      return kScriptFailed;
    }
    return kAllWell;
  }

  ExitStatus Complete(ExitStatus status) {
    progress_.Erase();
    std::fflush(stdout);
    if (command_.summary) Summarise();
    try {
      outputs_.Complete();
    } catch (const IoError& error) {
      Complain(error.what());
      if (status == kAllWell) return kNotOpened;
    }
    return status;
  }

  void Summarise() const {
    const RunCounts& counts = observed_.Counts();
    const std::optional<long> tck_cycles = stack_.TckCycles();
    const std::string cycles = tck_cycles.has_value() ? std::to_string(*tck_cycles) : "unknown";
    std::fprintf(stderr, "operations %ld, TCK cycles %s, bits shifted %ld, reads %ld, %.3f s\n",
                 counts.operations, cycles.c_str(), counts.bits, counts.reads,
                 progress_.Elapsed().count());
  }

  static Runner* running;  // callbacks carry no handle

  const RunCommand& command_;
  Plugin plugin_;
  Progress progress_;
  // Before the outputs: a run that cannot begin leaves the files of the run before it alone.
  ProbeStack stack_;
  Outputs outputs_;
  ObservedProbe observed_;
  std::string last_message_;
};

Runner* Runner::running = nullptr;

}  // namespace

ExitStatus Run(const RunCommand& command) {
  // The plug-in writes to standard output itself, too.
  if (command.quiet && std::freopen("/dev/null", "w", stdout) == nullptr) return kNotOpened;
  try {
    return Runner(command).RunAll();
  } catch (const Interrupted& error) {
    Complain(error.what());
    return kInterrupted;
  } catch (const IoError& error) {
    Complain(error.what());
    return kNotOpened;
  }
}

}  // namespace icehost
