#include "host/run.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <utility>

#include "host/check/check.h"
#include "host/outputs.h"
#include "host/probe/plugin.h"
#include "host/probe_stack.h"
#include "host/record/observed_probe.h"
#include "host/reporter.h"
#include "host/system/errors.h"
#include "host/system/memory_file.h"

namespace icehost {
namespace {

// The plug-in reads a script twice, from a path: a pipe would be empty the second time.
bool IsRegularFile(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

Plugin LoadPlugin(const std::string& path) {
  try {
    return Plugin(path);
  } catch (const std::runtime_error& error) {
    throw IoError(fmt::format("cannot load the plug-in: {}", error.what()));
  }
}

class Runner {
 public:
  explicit Runner(const RunCommand& command)
      : command_(command),
        plugin_(LoadPlugin(command.plugin)),
        stack_(command),
        outputs_(command),
        reporter_(outputs_.listeners,
                  !command.quiet && command.trace != "-" && isatty(STDERR_FILENO) != 0),
        observed_(
            stack_.Build(outputs_.recorders, [this](const std::string& why) { OnDoubt(why); }),
            outputs_.listeners, [this](const std::string& why) { reporter_.Say(why); },
            [this](const std::string& operation) { OnOperation(operation); }) {
    running = this;
  }
  ~Runner() { running = nullptr; }
  Runner(const Runner&) = delete;
  Runner& operator=(const Runner&) = delete;

  ExitStatus RunAll() {
    ExitStatus status = kAllWell;
    for (const std::string& script : command_.scripts) {
      reporter_.BeginScript(script);
      status = RunOne(script);
      reporter_.EndScript(status == kAllWell);
      if (status != kAllWell) break;
    }
    return Complete(status);
  }

 private:
  static int Show(const char* message) {
    running->reporter_.Show(message);
    return 0;
  }

  void OnOperation(const std::string& operation) {
    reporter_.CountOperation();
    if (outputs_.svg.has_value()) {
      outputs_.svg->BeginOperation(stack_.Steps(), operation);
    }
  }

  void OnDoubt(const std::string& why) {
    if (command_.strict) throw Unsupported(why);
    if (!std::exchange(doubted_, true)) reporter_.Say(fmt::format("warning: {}", why));
  }

  ExitStatus RunOne(const std::string& script) {
    doubted_ = false;
    try {
      std::optional<std::string> content = ReadContent(script);
      if (!content.has_value()) return kScriptFailed;
      return RunContent(script, std::move(*content));
    } catch (const Interrupted& error) {
      reporter_.Say(error.what());
      return kInterrupted;
    } catch (const IoError& error) {
      reporter_.Say(error.what());
      return kNotOpened;
    } catch (const PluginThrew& error) {
      reporter_.Say(fmt::format("{}: the plug-in threw an exception{}", script, error.what()));
      return kScriptFailed;
    }
  }

  // Nothing where it cannot be read, which has been said then.
  std::optional<std::string> ReadContent(const std::string& script) {
    try {
      return ReadScript(script);
    } catch (const IoError& error) {
      reporter_.Say(error.what());
      return std::nullopt;
    }
  }

  ExitStatus RunContent(const std::string& script, std::string content) {
    std::optional<MemoryFile> copy;
    if (!IsRegularFile(script)) copy.emplace(content);
    const bool ran = RunPlugin(copy.has_value() ? copy->Path() : script);
    observed_.Flush();
    const ScriptText text(script, std::move(content));
    reporter_.Flush();
    if (!ran) {
      const std::string why = command_.quiet ? ": " + reporter_.LastMessage() : "";
      reporter_.Say(fmt::format("{} failed{}", script, why));
      return kScriptFailed;
    }
    // The plug-in's result is 0 for a JTAG script with errors.
    if (!IsGpioScript(text) && Check(text).HasErrors()) {
      reporter_.Say(fmt::format("{} has errors; icehost check shows them", script));
      return kScriptFailed;
    }
    return kAllWell;
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

  ExitStatus Complete(ExitStatus status) {
    reporter_.Close();
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
    const std::optional<long> cycles = stack_.TckCycles();
    fmt::print(stderr, "operations {}, TCK cycles {}, bits shifted {}, reads {}, {:.3f} s\n",
               counts.operations, cycles.has_value() ? std::to_string(*cycles) : "unknown",
               counts.bits, counts.reads, reporter_.Seconds());
  }

  static Runner* running;  // callbacks carry no handle

  const RunCommand& command_;
  Plugin plugin_;
  // Before the outputs: a run that cannot begin leaves the files of the run before it alone.
  ProbeStack stack_;
  Outputs outputs_;
  Reporter reporter_;
  ObservedProbe observed_;
  bool doubted_ = false;  // in this script
};

Runner* Runner::running = nullptr;

}  // namespace

ExitStatus Run(const RunCommand& command) {
  // The plug-in writes to standard output itself, too.
  if (command.quiet && std::freopen("/dev/null", "w", stdout) == nullptr) {
    Complain(fmt::format("/dev/null: {}", std::strerror(errno)));
    return kNotOpened;
  }
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
