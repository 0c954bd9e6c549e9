#include "host/tables/outputs.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <new>

#include "host/events/run_writers.h"
#include "host/page/page_writer.h"
#include "host/picture/svg_drawing.h"
#include "host/pins/pin_writers.h"
#include "host/svf/svf_writer.h"
#include "host/system/errors.h"
#include "host/system/standard_streams.h"

namespace icehost {
namespace {

constexpr auto kLines = OutputFile::Rest::kLines;
constexpr auto kNothing = OutputFile::Rest::kNothing;
constexpr char kVcdHelp[] = "Write the waveform, for GTKWave, PulseView or sigrok-cli";

template <class Interface>
void AddTo(std::vector<Interface*>& listeners, Output& output) {
  if (auto* const one = dynamic_cast<Interface*>(&output)) listeners.push_back(one);
}

// Returns the time `ago` seconds ago as text.
std::string TimeText(double ago) {
  const auto time = std::chrono::system_clock::now() -
                    std::chrono::milliseconds(static_cast<std::int64_t>(ago * 1000));
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm utc = {};
  gmtime_r(&seconds, &utc);
  char text[sizeof "2000-01-01 00:00:00 UTC"] = "";
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &utc);
  return text;
}

}  // namespace

const std::vector<OutputKind>& OutputKinds() {
  static const std::vector<OutputKind> kinds = {
      {"--trace",
       /*file_may_lack=*/true,
       /*needs_pins=*/false,
       kLines,
       {"Trace the plug-in's calls on standard error, or in a file with --trace=FILE", MakeTrace},
       {"Trace each scan, reset and client on standard error, or in a file with --trace=FILE",
        MakeServeTrace}},
      {"--json",
       /*file_may_lack=*/false,
       /*needs_pins=*/false,
       kLines,
       {"Write calls and messages as JSON lines", MakeJson},
       {"Write the same events as JSON lines", MakeServeJson}},
      {"--vcd",
       /*file_may_lack=*/false,
       /*needs_pins=*/true,
       kLines,
       {kVcdHelp, MakeVcd},
       {kVcdHelp, MakeVcd}},
      {"--svg",
       /*file_may_lack=*/false,
       /*needs_pins=*/true,
       kNothing,
       {"Write the waveform as a picture", MakeSvg},
       {}},
      {"--html",
       /*file_may_lack=*/false,
       /*needs_pins=*/false,
       kNothing,
       {"Write a page for a browser: script, operations, waveform", MakeRunPage},
       {"Write a page for a browser, at the end", MakeServePage}},
      {"--svf",
       /*file_may_lack=*/false,
       /*needs_pins=*/false,
       kLines,
       {"Write the operations in the Serial Vector Format (SVF)", MakeSvfPinWriter,
        MakeSvfCallWriter},
       {}},
      {"--junit",
       /*file_may_lack=*/false,
       /*needs_pins=*/false,
       kNothing,
       {"Write the results as JUnit XML, for a CI server", MakeJUnit},
       {},
       /*reports_unplayed=*/true},
  };
  return kinds;
}

bool UseStandardError(const OutputRequests& requests) {
  return std::any_of(requests.begin(), requests.end(),
                     [](const OutputRequest& request) { return !request.path.has_value(); });
}

std::vector<std::pair<std::string, std::string>> HeadEntries(const ProbeOptions& probe,
                                                             const std::string& counts,
                                                             double seconds) {
  return {{"Probe", probe.kind->describe(probe)},
          {"Totals", counts},
          {"Started", TimeText(seconds)},
          {"icehost", ICEHOST_VERSION}};
}

Outputs::Outputs(const OutputRequests& requests, OutputKind::Verb OutputKind::*verb,
                 const ProbeOptions& options, FileUses uses)
    : uses_(std::move(uses)) {
  const ProbeKind& probe = *options.kind;
  for (const OutputRequest& request : requests) {
    if (!request.kind->needs_pins || probe.ShowsPins()) continue;
    throw IoError(fmt::format("{}: {} gives no access to pins, so there is no waveform",
                              request.kind->option, probe.title));
  }
  for (const auto& [kind, path] : requests) {
    OutputFile* const file = path.has_value() ? &Add(kind->option, *path, kind->rest) : nullptr;
    const auto& [help, make, make_without_pins] = kind->*verb;
    const bool without = !probe.ShowsPins() && make_without_pins != nullptr;
    const MakeOutput make_output = without ? make_without_pins : make;
    writers_.push_back({make_output(file != nullptr ? file->Stream() : StandardError()), file});
    Output& output = *writers_.back().output;
    AddTo(listeners, output);
    AddTo(serve_listeners, output);
    AddTo(recorders, output);
  }
  begun_ = files_.size();
  if (options.spawn_log.empty()) return;
  options.spawned->LogTo(Add("--spawn-log", options.spawn_log, kLines));
}

OutputFile& Outputs::Add(const std::string& option, const std::string& path,
                         OutputFile::Rest rest) {
  OutputFile& file = *files_.emplace_back(std::make_unique<OutputFile>(path, rest));
  uses_.AddOutput(file, option);
  if (file.IsStandardOutput()) standard_output_ = &file;
  return file;
}

void Outputs::Begin() {
  for (std::size_t i = 0; i < begun_; ++i) files_[i]->Begin();
  for (const Writer& writer : writers_) writer.output->Begin();
}

void Outputs::Flush() {
  for (const auto& file : files_) {
    file->Stream().flush();
    file->ThrowIfCut();
  }
}

std::vector<std::string> Outputs::TakeLosses() {
  std::vector<std::string> losses;
  for (const Writer& writer : writers_) {
    for (std::string& loss : writer.output->TakeLosses()) losses.push_back(std::move(loss));
  }
  return losses;
}

void Outputs::MarkIncomplete() {
  for (const auto& file : files_) file->MarkIncomplete();
}

template <class Act>
void Outputs::Guard(const Writer& writer, std::vector<std::string>& failures, const Act& act) {
  try {
    act();
  } catch (const std::bad_alloc&) {
    if (writer.file != nullptr) {
      writer.file->MarkIncomplete();
    } else {
      failures.emplace_back("standard error: out of memory");
    }
  }
  if (writer.file == nullptr) return;
  try {
    writer.file->Stream().flush();
    writer.file->ThrowIfCut();
  } catch (const IoError& error) {
    failures.emplace_back(error.what());
  } catch (const Interrupted&) {
    // The file is incomplete, and closing it reports that.
  }
}

std::vector<std::string> Outputs::End(const PageHead& head) {
  std::vector<std::string> failures;
  for (const Writer& writer : writers_) {
    Guard(writer, failures, [&] { writer.output->End(head); });
  }
  return failures;
}

std::vector<std::string> Outputs::EndRun(const RunEnd& end, const RunEnd& if_lost) {
  std::vector<std::string> failures;
  for (auto writer = writers_.rbegin(); writer != writers_.rend(); ++writer) {
    auto* const listener = dynamic_cast<EventListener*>(writer->output.get());
    if (listener == nullptr) continue;
    Guard(*writer, failures, [&] {
      for (const std::string& failure : failures) {
        listener->OnNotice({Severity::kError, failure, "", {0, 0}, {}, end.at});
      }
      listener->OnRunEnd(failures.empty() ? end : if_lost);
    });
  }
  for (std::string& failure : CloseAll(files_)) failures.push_back(std::move(failure));
  return failures;
}

std::vector<std::string> Outputs::Complete(const PageHead& head) {
  std::vector<std::string> failures = End(head);
  for (std::string& failure : CloseAll(files_)) failures.push_back(std::move(failure));
  return failures;
}

}  // namespace icehost
