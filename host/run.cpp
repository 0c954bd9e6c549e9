#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "host/check/check.h"
#include "host/check/learn.h"
#include "host/check/plan.h"
#include "host/console.h"
#include "host/events/follower.h"
#include "host/observed_probe.h"
#include "host/probe/plugin.h"
#include "host/run_events.h"
#include "host/run_scripts.h"
#include "host/run_totals.h"
#include "host/system/errors.h"
#include "host/system/files.h"
#include "host/system/interrupt.h"
#include "host/system/standard_streams.h"
#include "host/system/text.h"
#include "host/tables/outputs.h"
#include "host/verbs.h"

namespace icehost {
namespace {

// Plays scripts one after the other. There is only one Runner at a time.
class Runner {
 public:
  // Loads the plug-in and opens the outputs and the probe. Throws IoError if any of them cannot be
  // opened, and BadUsage if an output is the same file as another file of the run.
  explicit Runner(const RunCommand& command);
  ~Runner();
  Runner(const Runner&) = delete;
  Runner& operator=(const Runner&) = delete;

  // Plays the scripts, prints the reason for any failure, and completes the outputs.
  ExitStatus PlayAll(std::vector<Script> scripts);

 private:
  ExitStatus PlayRounds();
  void BeginRound();
  // Plays a round until a script fails or, with --keep-going, until one does not run to its end.
  ExitStatus PlayEach();
  ExitStatus PlayOne(Script& script);
  void EndScript(ExitStatus status);
  void TellEnd(bool ran);
  void RequestReset(const Script& script);
  // Returns whether the plug-in ran the script to its end.
  bool Play(Script& script);
  bool RunPlugin(const std::string& path);
  ExitStatus Judge(const Script& script, bool ran);
  ExitStatus LearnFrom(const Script& script);
  // Returns why the learned script could not be written completely, or an empty text.
  std::string WriteLearned();
  // Returns an empty text if the script did not fail.
  std::string WhyFailed(const Script& script) const;
  ExitStatus Complete(ExitStatus status);
  ExitStatus EndOutputs(ExitStatus status);
  void Conclude(const std::string& what, Severity severity);
  // Reports why the run stops early, and ends the current script.
  void BreakOff(const std::string& why);
  // Called instead of Complete if the main thread is stuck.
  void Abandon();
  // Called when the process exits. If the plug-in caused the exit, completes the run as failed.
  static void OnExit();
  ExitStatus EndWithPlugin() noexcept;

  static int Show(const char* message);
  void BeginScript(Script& script);

  static Runner* running;  // for the callbacks, which receive no context

  const RunCommand& command_;
  Plugin plugin_;
  Outputs outputs_;
  OutputFile* learned_;  // owned by outputs_; null without --learn
  std::string learned_script_;
  Console console_;
  RunEvents events_;
  Follower follower_;
  ObservedProbe probe_;
  std::vector<Script> scripts_;
  RunTotals totals_;
  Script* in_plugin_ = nullptr;  // the script that the plug-in runs now
  bool ran_ = false;             // whether the plug-in ran the current script to its end
  Rescue rescue_;                // must be the last member, because it uses the others
};

Follower::Mode ModeOf(const RunCommand& command) {
  if (!command.learn.empty()) return Follower::Mode::kLearn;
  return command.keep_going ? Follower::Mode::kKeepGoing : Follower::Mode::kFail;
}

Console::Options ConsoleOptions(const RunCommand& command) {
  const bool shares = UseStandardError(command.outputs);
  return {command.quiet, !command.quiet && !shares && isatty(STDERR_FILENO) != 0};
}

Runner* Runner::running = nullptr;

Runner::Runner(const RunCommand& command)
    : command_(command),
      plugin_(command.plugin),
      outputs_(command.outputs, &OutputKind::run, command.probe,
               FileUses(command.scripts, command.plugin)),
      learned_(command.learn.empty()
                   ? nullptr
                   : &outputs_.Add("--learn", command.learn, OutputFile::Rest::kNothing)),
      console_(ConsoleOptions(command), rescue_),
      events_(outputs_, console_, command),
      follower_(ModeOf(command)),
      probe_(command.probe, command.wire_mode, !outputs_.recorders.empty(), command.strict,
             follower_, events_, rescue_),
      totals_(command, scripts_, probe_, console_),
      rescue_(Rescue::State::kWorking, [this] { Abandon(); }) {
  running = this;
  if (std::atexit(OnExit) != 0 || std::at_quick_exit(OnExit) != 0) throw IoError("out of memory");
}

Runner::~Runner() {
  running = nullptr;
}

ExitStatus Runner::PlayAll(std::vector<Script> scripts) {
  ExitStatus status = kNotOpened;
  scripts_ = std::move(scripts);
  console_.Expect(totals_.ExpectedOperations());
  try {
    status = PlayRounds();
  } catch (const Interrupted& error) {
    status = kInterrupted;
    BreakOff(error.what());
  } catch (const IoError& error) {
    // If standard output fails after an interrupt, the exit status still reports the interrupt.
    status = IsInterrupted() ? kInterrupted : kNotOpened;
    BreakOff(error.what());
  } catch (const std::bad_alloc&) {
    outputs_.MarkIncomplete();
    console_.Close();
    ComplainOfMemory();
  }
  return Complete(status);
}

void Runner::BreakOff(const std::string& why) {
  events_.Abandon(why);
  if (events_.InScript()) TellEnd(false);
}

ExitStatus Runner::PlayRounds() {
  ExitStatus status = kAllWell;
  outputs_.Begin();
  events_.BeginRun(BeginOf(command_, scripts_));
  bool goes_on = true;
  while (goes_on && totals_.WantsRound()) {
    BeginRound();
    const ExitStatus ended = PlayEach();
    totals_.EndRound(ended);
    status = std::max(status, ended);
    goes_on = ended == kAllWell || (command_.keep_going && ran_);
  }
  return status;
}

void Runner::BeginRound() {
  totals_.BeginRound();
  if (!command_.Repeats()) return;
  events_.BeginRound(totals_.Round());
  console_.ShowRounds(totals_.RoundText());
}

ExitStatus Runner::PlayEach() {
  ExitStatus status = kAllWell;
  for (Script& script : scripts_) {
    BeginScript(script);
    const ExitStatus ended = PlayOne(script);
    EndScript(ended);
    status = std::max(status, ended);
    if (ended != kAllWell && !(command_.keep_going && ran_)) break;
  }
  return status;
}

void Runner::EndScript(ExitStatus status) {
  for (const std::string& loss : outputs_.TakeLosses()) events_.Say(loss, Severity::kWarning);
  TellEnd(status == kAllWell);
  totals_.Summarize(follower_, status);
}

void Runner::TellEnd(bool ran) {
  totals_.EndScript(follower_);
  events_.EndScript({ran, follower_.Values(), follower_.FirstUnread()});
}

void Runner::BeginScript(Script& script) {
  ScriptBegin begin = BeginOf(script, totals_.BeginScript());
  if (!command_.Repeats()) script.problems = {};
  events_.BeginScript(std::move(begin));
}

ExitStatus Runner::PlayOne(Script& script) {
  ran_ = false;
  follower_.Begin(script.plan);
  try {
    return Judge(script, Play(script));
  } catch (const Interrupted& error) {
    events_.Say(error.what());
    return kInterrupted;
  } catch (const IoError& error) {
    events_.Fail(error.what());
    return kNotOpened;
  } catch (const Unsupported& error) {
    events_.Say(fmt::format("{}: {}", script.path, error.what()));
    return kScriptFailed;
  } catch (const PluginThrew& error) {
    events_.Say(fmt::format("{}: the plug-in threw an exception{}", script.path, error.what()));
    return kScriptFailed;
  } catch (const std::bad_alloc&) {
    outputs_.MarkIncomplete();
    events_.Say(fmt::format("{}: out of memory", script.path));
    return kNotOpened;
  }
}

void Runner::RequestReset(const Script& script) {
  if (probe_.ResetTapBeforeScan()) return events_.RequestReset();
  constexpr const char* kSkipped = "# reset TAP is skipped: this probe cannot reset the TAP";
  if (command_.strict) throw Unsupported(kSkipped);
  events_.Remark(fmt::format("{}: {}", script.path, kSkipped), Severity::kWarning);
}

bool Runner::Play(Script& script) {
  ThrowIfInterrupted();  // the only check for signals if the plug-in makes no calls
  if (script.plan.resets_tap) RequestReset(script);
  const MemoryFile copy(script.text->Content());
  // Frees the text, which may be long, unless it is needed again.
  if (command_.learn.empty() && !command_.Repeats()) script.text.reset();
  in_plugin_ = &script;
  const bool ran = RunPlugin(copy.Path());
  in_plugin_ = nullptr;
  probe_.Flush();
  events_.Flush();
  return ran;
}

ExitStatus Runner::Judge(const Script& script, bool ran) {
  ran_ = ran;
  const std::string why = WhyFailed(script);
  if (!why.empty()) {
    events_.Say(fmt::format("{} {}", script.path, why));
    return kScriptFailed;
  }
  return command_.learn.empty() ? kAllWell : LearnFrom(script);
}

ExitStatus Runner::LearnFrom(const Script& script) {
  Learned learned = Learn(*script.text, script.plan, follower_.Read());
  const bool writable = !CheckScript(ScriptText(script.name, learned.script)).problems.HasErrors();
  if (!writable || follower_.Unread() > 0) {
    events_.Say(fmt::format("nothing was learned from {}: {}", script.path,
                            writable ? "this probe does not report every expected value"
                                     : "the values that were read would make a line too long"));
    return kScriptFailed;
  }
  learned_script_ = std::move(learned.script);
  for (const Problem& problem : learned.stale.Found()) events_.Warn(problem.place, problem.text);
  return kAllWell;
}

std::string Runner::WhyFailed(const Script& script) const {
  if (!ran_) {
    const bool shown = !command_.quiet || events_.Explained() || events_.LastMessage().empty();
    return shown ? "failed" : "failed: " + events_.LastMessage();
  }
  // The plug-in may return 0 for a JTAG script with errors.
  if (script.has_errors) return "has errors";
  if (follower_.Unmet() > 0) {
    return fmt::format("failed: {} of {} values {} not as expected", follower_.Unmet(),
                       follower_.Compared(), follower_.Unmet() == 1 ? "was" : "were");
  }
  // A plug-in set with --plugin may skip parts of the script.
  if (command_.learn.empty() && follower_.Unread() > 0) {
    return fmt::format("failed: {} of {} expected values {} not read", follower_.Unread(),
                       script.plan.expectations.size(), follower_.Unread() == 1 ? "was" : "were");
  }
  if (follower_.Exceeded()) return "failed: the plug-in ran more operations than the script has";
  if (follower_.Unreached() > 0) {
    return fmt::format("failed: the plug-in skipped {} of the script's operations",
                       follower_.Unreached());
  }
  return "";
}

bool Runner::RunPlugin(const std::string& path) {
  const Rescue::Scope away(rescue_, Rescue::State::kAway);
  return plugin_.Run(probe_, path, Show);
}

int Runner::Show(const char* message) {
  const Rescue::Scope working(running->rescue_, Rescue::State::kWorking);
  running->events_.Message(message);
  return 0;
}

ExitStatus Runner::Complete(ExitStatus status) {
  console_.Close();
  StandardError() << PrintableLines(totals_.Text());
  return EndOutputs(status);
}

// The exit status in the outputs also reflects failures to write the outputs themselves.
ExitStatus Runner::EndOutputs(ExitStatus status) {
  const std::vector<std::string> failures = outputs_.End(totals_.Head(status));
  for (const std::string& loss : outputs_.TakeLosses()) Conclude(loss, Severity::kWarning);
  for (const std::string& failure : failures) Conclude(failure, Severity::kError);
  const auto with_loss = [](ExitStatus one) { return one == kAllWell ? StatusOfLoss() : one; };
  const bool lost = !failures.empty() || (status == kAllWell && !CompleteStandardStreams());
  if (lost) status = with_loss(status);
  // If the run fails, the file keeps the script that an earlier run learned.
  if (learned_ != nullptr && status == kAllWell) {
    if (const std::string why = WriteLearned(); !why.empty()) {
      Conclude(why, Severity::kError);
      status = StatusOfLoss();
    }
  }
  const std::vector<std::string> late = outputs_.EndRun(
      totals_.EndOf(status, events_.Now()), totals_.EndOf(with_loss(status), events_.Now()));
  for (const std::string& failure : late) Complain(failure);
  return late.empty() ? status : with_loss(status);
}

std::string Runner::WriteLearned() {
  learned_->Begin();
  learned_->Stream() << learned_script_ << std::flush;
  try {
    learned_->ThrowIfCut();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

void Runner::Conclude(const std::string& what, Severity severity) {
  Complain(what);
  events_.Conclude(what, severity);
}

void Runner::Abandon() {
  BreakOff(Interrupted().what());
  EndOutputs(kInterrupted);
}

void Runner::OnExit() {
  if (running == nullptr || running->in_plugin_ == nullptr) return;
  std::_Exit(running->EndWithPlugin());
}

ExitStatus Runner::EndWithPlugin() noexcept try {
  const Rescue::Scope working(rescue_, Rescue::State::kWorking);
  const Script& script = *std::exchange(in_plugin_, nullptr);
  const std::string why = fmt::format("{}: the plug-in ended the process", script.path);
  try {
    events_.Flush();
    events_.Say(why);
    EndScript(kScriptFailed);
  } catch (const IoError& error) {  // standard output is lost
    events_.Abandon(why);
    BreakOff(error.what());
  }
  totals_.EndRound(kScriptFailed);
  return EndSpawned(command_.probe, Complete(kScriptFailed));
} catch (const std::exception& error) {
  Complain(error.what());
  return kScriptFailed;
}

ExitStatus LoadAndPlay(const RunCommand& command) {
  std::vector<Script> scripts;
  const auto refuse = [&](const std::string& why, ExitStatus status) {
    if (!why.empty()) Complain(why);
    ReportUnplayed(command, scripts, why, status);
    return status;
  };
  try {
    scripts = LoadScripts(command);
  } catch (const IoError& error) {
    return refuse(error.what(), kScriptFailed);
  } catch (const OutOfResources& error) {
    return refuse(error.what(), kNotOpened);
  } catch (const Interrupted& error) {
    return refuse(error.what(), kInterrupted);
  }
  if (std::any_of(scripts.begin(), scripts.end(),
                  [](const Script& script) { return !script.refusal.empty(); })) {
    return refuse("", kScriptFailed);
  }
  try {
    return Runner(command).PlayAll(std::move(scripts));
  } catch (const Interrupted& error) {
    return refuse(error.what(), kInterrupted);
  } catch (const IoError& error) {
    return refuse(error.what(), kNotOpened);
  }
}

}  // namespace

ExitStatus Execute(const RunCommand& command) {
  return EndSpawned(command.probe, LoadAndPlay(command));
}

}  // namespace icehost
