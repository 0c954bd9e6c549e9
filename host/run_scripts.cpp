#include "host/run_scripts.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <iterator>
#include <utility>

#include "host/system/errors.h"
#include "host/system/files.h"
#include "host/system/standard_streams.h"
#include "host/tables/outputs.h"

namespace icehost {
namespace {

// Returns why a script with these problems is not played, or an empty text if it is played.
std::string WhyNot(const Problems& problems, const RunCommand& command) {
  if (problems.HasErrors() && !command.force) {
    return "has errors, so no script is run (--force runs scripts with errors, too)";
  }
  if (problems.Warnings() > 0 && command.strict) {
    return "has warnings, so no script is run (because of --strict)";
  }
  return "";
}

void ReportRefusal(const Script& script, std::size_t index, EventListener& listener) {
  listener.OnScript(BeginOf(script, index));
  const std::string text = fmt::format("{} {}", script.path, script.refusal);
  listener.OnNotice({Severity::kError, text, script.name, {0, 0}, {}});
  listener.OnScriptEnd({false, {}, {}});
}

}  // namespace

std::vector<Script> LoadScripts(const RunCommand& command) {
  std::vector<Script> scripts;
  scripts.reserve(command.scripts.size());
  for (const std::string& path : command.scripts) {
    const std::string name = path == "-" ? "<stdin>" : path;
    scripts.push_back({path,
                       name,
                       ScriptText(name, ReadScript(path, command.size_limit)),
                       {},
                       false,
                       {},
                       {},
                       {}});
  }
  for (Script& script : scripts) {
    CheckResult result = CheckScript(*script.text);
    if (command.probe.ChoosesTap() && !result.plan.pins.empty()) {
      result.problems.Warn({1, 1},
                           "--tap has no effect on a GPIO script, which drives the whole chain");
      result.problems.Sort();
    }
    result.problems.Write(StandardError(), script.name, script.text->Content(),
                          {command.quiet && !command.strict, WantsColour(STDERR_FILENO)});
    script.refusal = WhyNot(result.problems, command);
    if (!script.refusal.empty()) Complain(fmt::format("{} {}", script.path, script.refusal));
    script.plan = std::move(result.plan);
    script.has_errors = result.problems.HasErrors();
    script.problems = std::move(result.problems);
  }
  return scripts;
}

RunBegin BeginOf(const RunCommand& command, const std::vector<Script>& scripts) {
  RunBegin run;
  run.arguments = command.arguments;
  run.probe = command.probe.kind->describe(command.probe);
  run.version = ICEHOST_VERSION;
  run.started = std::chrono::system_clock::now();
  for (std::size_t i = 0; i < command.scripts.size(); ++i) {
    run.scripts.push_back({command.scripts[i], i < scripts.size() ? &scripts[i].plan : nullptr});
  }
  return run;
}

ScriptBegin BeginOf(const Script& script, std::size_t index) {
  std::vector<SourceMark> marks;
  for (const Problem& problem : script.problems.Found()) {
    marks.push_back({problem.place.line, problem.place.column, problem.severity, problem.text});
  }
  return {index, script.path, script.name, script.text->Content(), std::move(marks)};
}

void ReportUnplayed(const RunCommand& command, const std::vector<Script>& scripts,
                    const std::string& why, ExitStatus status) {
  OutputRequests requests;
  std::copy_if(command.outputs.begin(), command.outputs.end(), std::back_inserter(requests),
               [](const OutputRequest& one) { return one.kind->reports_unplayed; });
  if (requests.empty()) return;
  ProbeOptions probe = command.probe;
  probe.spawn_log.clear();  // a run that plays nothing does not write this log
  try {
    Outputs outputs(requests, &OutputKind::run, probe, FileUses(command.scripts, command.plugin));
    outputs.Begin();
    for (EventListener* const listener : outputs.listeners) {
      listener->OnRunBegin(BeginOf(command, scripts));
      for (std::size_t i = 0; i < scripts.size(); ++i) {
        if (!scripts[i].refusal.empty()) ReportRefusal(scripts[i], i, *listener);
      }
      if (!why.empty()) listener->OnNotice({Severity::kError, why, "", {0, 0}, {}});
    }
    RunEnd end = {};
    end.status = status;
    for (const std::string& failure : outputs.EndRun(end, end)) Complain(failure);
  } catch (const IoError& error) {
    if (error.what() != why) Complain(error.what());
  }
}

}  // namespace icehost
