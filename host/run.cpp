#include "host/run.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "host/check/check.h"
#include "host/outputs.h"
#include "host/probe/plugin.h"
#include "host/probe_stack.h"
#include "host/record/observed_probe.h"
#include "host/reporter.h"
#include "host/scripts.h"
#include "host/system/errors.h"
#include "host/system/interrupt.h"
#include "host/system/memory_file.h"

namespace icehost {
namespace {

class Runner {
 public:
  explicit Runner(const RunCommand& command)
      : command_(command),
        plugin_(command.plugin),
        stack_(command),
        outputs_(command),
        reporter_(outputs_.listeners, work_,
                  {command.quiet, !command.quiet && command.trace != kStandardError &&
                                      isatty(STDERR_FILENO) != 0}),
        observed_(
            stack_.Build(outputs_.recorders, [this](const std::string& why) { OnDoubt(why); }),
            outputs_.listeners, [this](const std::string& why) { reporter_.Say(why); },
            [this](const char* operation) { OnCall(operation); }) {
    running = this;
    SetRescue([this] { return Abandon(); });
  }
  ~Runner() {
    SetRescue(nullptr);
    running = nullptr;
  }
  Runner(const Runner&) = delete;
  Runner& operator=(const Runner&) = delete;

  ExitStatus RunAll(std::vector<Script> scripts) {
    ExitStatus status = kAllWell;
    outputs_.Begin();
    for (Script& script : scripts) {
      reporter_.BeginScript(script.path);
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

  void OnCall(const char* operation) {
    reporter_.OnCall(operation);
    outputs_.ThrowIfCut();
    if (operation != nullptr && outputs_.svg.has_value()) {
      outputs_.svg->BeginOperation(stack_.Steps(), operation);
    }
  }

  void OnDoubt(const std::string& why) {
    if (command_.strict) throw Unsupported(why);
    if (!std::exchange(doubted_, true)) reporter_.Say(fmt::format("warning: {}", why));
  }

  ExitStatus RunOne(Script& script) {
    doubted_ = false;
    try {
      return RunContent(script.path, std::move(script.content));
    } catch (const Interrupted& error) {
      reporter_.Say(error.what());
      return kInterrupted;
    } catch (const IoError& error) {
      reporter_.Say(error.what());
      return kNotOpened;
    } catch (const PluginThrew& error) {
      reporter_.Say(fmt::format("{}: the plug-in threw an exception{}", script.path, error.what()));
      return kScriptFailed;
    } catch (const std::bad_alloc&) {
      reporter_.Say(fmt::format("{}: out of memory", script.path));
      return kNotOpened;
    }
  }

  ExitStatus RunContent(const std::string& script, std::string content) {
    std::optional<ScriptText> text(std::in_place, script, std::move(content));
    const MemoryFile copy(text->Content());
    // Of a GPIO script with errors nothing runs: there is nothing to judge afterwards.
    if (IsGpioScript(*text)) text.reset();
    const bool ran = RunPlugin(copy.Path());
    observed_.Flush();
    reporter_.Flush();
    if (!ran) {
      const std::string why = command_.quiet ? ": " + reporter_.LastMessage() : "";
      reporter_.Say(fmt::format("{} failed{}", script, why));
      return kScriptFailed;
    }
    // The plug-in's result is 0 for a JTAG script with errors.
    if (text.has_value() && Check(*text).HasErrors()) {
      reporter_.Say(fmt::format("{} has errors; icehost check shows them", script));
      return kScriptFailed;
    }
    return kAllWell;
  }

  bool RunPlugin(const std::string& path) {
    const std::unique_ptr<Reporter, void (*)(Reporter*)> leave(
        &reporter_, [](Reporter* reporter) { reporter->LeavePlugin(); });
    reporter_.EnterPlugin();
    return plugin_.Run(observed_, path, Show);
  }

  ExitStatus Complete(ExitStatus status) {
    reporter_.Close();
    if (command_.summary) Summarise();
    const std::vector<std::string> failures = outputs_.Complete();
    for (const std::string& failure : failures) Complain(failure);
    return status == kAllWell && !failures.empty() ? kNotOpened : status;
  }

  // In place of Complete, where that is not reached. False while the main thread is at work.
  bool Abandon() {
    if (!work_.TakeOver()) return false;
    reporter_.Abandon("interrupted");
    for (const std::string& failure : outputs_.Complete()) Complain(failure);
    return true;
  }

  void Summarise() const {
    const RunCounts& counts = observed_.Counts();
    const std::optional<long> cycles = stack_.TckCycles();
    std::fputs(
        fmt::format("operations {}, TCK cycles {}, bits shifted {}, reads {}, {:.3f} s\n",
                    counts.operations, cycles.has_value() ? std::to_string(*cycles) : "unknown",
                    counts.bits, counts.reads, reporter_.Seconds())
            .c_str(),
        stderr);
  }

  static Runner* running;  // callbacks carry no handle

  const RunCommand& command_;
  WorkLock work_;
  Plugin plugin_;
  ProbeStack stack_;
  Outputs outputs_;
  Reporter reporter_;
  ObservedProbe observed_;
  bool doubted_ = false;  // in this script
};

Runner* Runner::running = nullptr;

}  // namespace

ExitStatus Run(const RunCommand& command) {
  std::vector<Script> scripts;
  try {
    scripts = ReadScripts(command.scripts, command.size_limit);
  } catch (const IoError& error) {
    Complain(error.what());
    return kScriptFailed;
  }
  try {
    return Runner(command).RunAll(std::move(scripts));
  } catch (const Interrupted& error) {
    Complain(error.what());
    return kInterrupted;
  } catch (const IoError& error) {
    Complain(error.what());
    return kNotOpened;
  }
}

}  // namespace icehost
