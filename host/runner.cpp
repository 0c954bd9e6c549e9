#include "host/runner.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include "host/check/check.h"
#include "host/check/learn.h"
#include "host/page_head.h"
#include "host/system/errors.h"
#include "host/system/files.h"
#include "host/system/interrupt.h"
#include "host/system/standard_streams.h"
#include "host/system/text.h"

namespace icehost {
namespace {

Follower::Mode ModeOf(const RunCommand& command) {
  if (!command.learn.empty()) return Follower::Mode::kLearn;
  return command.keep_going ? Follower::Mode::kKeepGoing : Follower::Mode::kFail;
}

}  // namespace

Runner* Runner::running = nullptr;

Runner::Runner(const RunCommand& command)
    : command_(command),
      plugin_(command.plugin),
      stack_(command.probe, command.wire_mode, NeedPins(command.outputs)),
      outputs_(command.outputs, &OutputKind::run, stack_.ShowsPins()),
      reporter_(outputs_.listeners, work_,
                {command.quiet, !command.quiet && command.outputs[0] != kStandardError &&
                                    isatty(STDERR_FILENO) != 0}),
      follower_(ModeOf(command),
                [this](Place place, const std::string& what) {
                  explained_ = true;
                  reporter_.SayAt(place.line, place.column, what);
                }),
      observed_(stack_.Build(outputs_.recorders), follower_, outputs_.listeners,
                {[this](const std::string& why) { SayOfCall(why); },
                 [this](const std::string& why) { OnDoubt(why); },
                 [this](bool begins) { OnCall(begins); }, [this] { return stack_.Steps(); }}) {
  if (!command.learn.empty()) {
    learned_ = &outputs_.Add(command.learn, OutputFile::Rest::kNothing);
  }
  running = this;
  SetRescue([this] { return Abandon(); });
}

Runner::~Runner() {
  SetRescue(nullptr);
  running = nullptr;
}

ExitStatus Runner::RunAll(std::vector<Script> scripts) {
  ExitStatus status = kAllWell;
  outputs_.Begin();
  for (Script& script : scripts) {
    ++begun_;
    TellSource(script);
    reporter_.BeginScript(script.path, script.name);
    const ExitStatus ended = RunOne(script);
    for (const std::string& loss : outputs_.TakeLosses()) reporter_.Say(loss);
    reporter_.EndScript(ended == kAllWell);
    if (command_.summary) Summarise(script.name);
    status = std::max(status, ended);
    if (ended != kAllWell && !(command_.keep_going && ran_)) break;
  }
  return Complete(status);
}

int Runner::Show(const char* message) {
  running->reporter_.Show(message);
  return 0;
}

void Runner::OnCall(bool begins_operation) {
  reporter_.OnCall(begins_operation);
  outputs_.ThrowIfCut();
  if (begins_operation) stack_.BeginOperation(observed_.UnderWay().source);
}

void Runner::OnDoubt(const std::string& why) {
  if (command_.strict) throw Unsupported(why);
  if (std::exchange(doubted_, true)) return;
  reporter_.SayAt(observed_.UnderWay().source.line, 0, fmt::format("warning: {}", why));
}

void Runner::SayOfCall(const std::string& why) {
  const ObservedProbe::Call& call = observed_.UnderWay();
  explained_ = true;
  if (call.function == nullptr) {
    reporter_.Say(why);
  } else {
    reporter_.SayAt(call.source.line, 0, fmt::format("{} failed: {}", call.function, why));
  }
}

ExitStatus Runner::RunOne(Script& script) {
  doubted_ = false;
  ran_ = false;
  explained_ = false;
  follower_.Begin(script.plan);
  observed_.Leave();
  try {
    return Judge(script, Play(script));
  } catch (const Interrupted& error) {
    reporter_.Say(error.what());
    return kInterrupted;
  } catch (const IoError& error) {
    SayOfCall(error.what());
    return kNotOpened;
  } catch (const PluginThrew& error) {
    reporter_.Say(fmt::format("{}: the plug-in threw an exception{}", script.path, error.what()));
    return kScriptFailed;
  } catch (const std::bad_alloc&) {
    reporter_.Say(fmt::format("{}: out of memory", script.path));
    return kNotOpened;
  }
}

bool Runner::Play(Script& script) {
  const MemoryFile copy(script.text->Content());
  // A long script need not be there twice.
  if (command_.learn.empty()) script.text.reset();
  const bool ran = RunPlugin(copy.Path());
  observed_.Flush();
  reporter_.Flush();
  return ran;
}

ExitStatus Runner::Judge(const Script& script, bool ran) {
  ran_ = ran;
  const std::string why = WhyFailed(script);
  if (!why.empty()) {
    reporter_.Say(fmt::format("{} {}", script.path, why));
    return kScriptFailed;
  }
  return command_.learn.empty() ? kAllWell : WriteLearned(script);
}

ExitStatus Runner::WriteLearned(const Script& script) {
  const std::string learned = Learn(*script.text, script.plan, follower_.Read());
  const bool writable = !Check(ScriptText(script.name, learned)).problems.HasErrors();
  if (!writable || follower_.Unread() > 0) {
    reporter_.Say(fmt::format("{} is not learned: {}", script.path,
                              writable ? "the probe does not tell all that it expects"
                                       : "with what was read, a line is too long"));
    return kScriptFailed;
  }
  // A run that fails leaves the script that was learned before it.
  learned_->Begin();
  learned_->Stream() << learned;
  return kAllWell;
}

std::string Runner::WhyFailed(const Script& script) const {
  const bool quiet = command_.quiet && !explained_;
  if (!ran_) return quiet ? "failed: " + reporter_.LastMessage() : "failed";
  // The plug-in's result is 0 for a JTAG script with errors.
  if (script.has_errors) return "has errors";
  if (follower_.Unmet() > 0) {
    return fmt::format("failed: not as expected: {} of the values read", follower_.Unmet());
  }
  // Another plug-in may do less than the script says.
  if (command_.learn.empty() && follower_.Unread() > 0) {
    return fmt::format("failed: not read: {} of the values expected", follower_.Unread());
  }
  return "";
}

bool Runner::RunPlugin(const std::string& path) {
  const std::unique_ptr<Reporter, void (*)(Reporter*)> leave(
      &reporter_, [](Reporter* reporter) { reporter->LeavePlugin(); });
  reporter_.EnterPlugin();
  return plugin_.Run(observed_, path, Show);
}

ExitStatus Runner::Complete(ExitStatus status) {
  reporter_.Close();
  if (command_.summary) std::fputs((PrintableLines(summary_) + Counts() + "\n").c_str(), stderr);
  const std::vector<std::string> failures = outputs_.Complete(Head(status));
  for (const std::string& loss : outputs_.TakeLosses()) Complain(loss);
  for (const std::string& failure : failures) Complain(failure);
  return status == kAllWell && !failures.empty() ? kNotOpened : status;
}

bool Runner::Abandon() {
  if (!work_.TakeOver()) return false;
  reporter_.Abandon("interrupted");
  for (const std::string& failure : outputs_.Complete(Head(kInterrupted))) Complain(failure);
  for (const std::string& loss : outputs_.TakeLosses()) Complain(loss);
  return true;
}

void Runner::Summarise(const std::string& script) {
  for (const std::string& line : follower_.Summary(script)) summary_ += line + '\n';
}

void Runner::TellSource(Script& script) {
  std::vector<SourceMark> marks;
  for (const Problem& problem : script.problems.Found()) {
    marks.push_back({problem.place.line, problem.place.column, problem.error, problem.text});
  }
  script.problems = {};
  for (EventListener* const listener : outputs_.listeners) {
    listener->OnSource(script.name, script.text->Content(), marks);
  }
}

PageHead Runner::Head(ExitStatus status) const {
  return RunHead(command_, {status, begun_, Counts(), reporter_.Seconds()});
}

std::string Runner::Counts() const {
  const RunCounts& counts = observed_.Counts();
  const std::optional<long> cycles = stack_.TckCycles();
  return fmt::format("operations {}, TCK cycles {}, bits shifted {}, reads {}, {:.3f} s",
                     counts.operations, cycles.has_value() ? std::to_string(*cycles) : "unknown",
                     counts.bits, counts.reads, reporter_.Seconds());
}

}  // namespace icehost
