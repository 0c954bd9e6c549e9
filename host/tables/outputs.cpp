#include "host/tables/outputs.h"

#include <iostream>

#include "host/events/json_writer.h"
#include "host/events/trace_writer.h"
#include "host/page/run_page.h"
#include "host/page/serve_page.h"
#include "host/picture/svg_writer.h"
#include "host/pins/serve_json.h"
#include "host/pins/serve_trace.h"
#include "host/pins/vcd_writer.h"
#include "host/svf/svf_writer.h"

namespace icehost {
namespace {

template <class Writer>
std::unique_ptr<Output> Make(std::ostream& stream, bool /*shows_pins*/) {
  return std::make_unique<Writer>(stream);
}

std::unique_ptr<Output> MakeSvf(std::ostream& stream, bool shows_pins) {
  return shows_pins ? MakeSvfPinWriter(stream) : MakeSvfCallWriter(stream);
}

constexpr auto kLines = OutputFile::Rest::kLines;
constexpr auto kNothing = OutputFile::Rest::kNothing;
constexpr char kVcdHelp[] = "Write the waveform, for GTKWave, PulseView or sigrok-cli";

template <class Interface>
void AddTo(std::vector<Interface*>& told, Output& output) {
  if (auto* const one = dynamic_cast<Interface*>(&output)) told.push_back(one);
}

}  // namespace

const OutputKind kOutputKinds[kOutputCount] = {
    {"--trace",
     true,
     false,
     kLines,
     {"Write a line for every host call, to standard error or with --trace=FILE",
      Make<TraceWriter>},
     {"Write a line for every scan, reset and client, to standard error or with --trace=FILE",
      Make<ServeTrace>}},
    {"--json",
     false,
     false,
     kLines,
     {"Write calls and messages as JSON lines", Make<JsonWriter>},
     {"Write the same as JSON lines", Make<ServeJson>}},
    {"--vcd", false, true, kLines, {kVcdHelp, Make<VcdWriter>}, {kVcdHelp, Make<VcdWriter>}},
    {"--svg", false, true, kNothing, {"Write the waveform as a picture", Make<SvgWriter>}, {}},
    {"--html",
     false,
     false,
     kNothing,
     {"Write all of it as one page for a browser: script, operations, waveform", Make<RunPage>},
     {"Write all of it as one page for a browser, at the end", Make<ServePage>}},
    {"--svf",
     false,
     false,
     kLines,
     {"Write what was played in the Serial Vector Format", MakeSvf},
     {}},
};

bool NeedPins(const OutputPaths& paths) {
  for (std::size_t i = 0; i < kOutputCount; ++i) {
    if (kOutputKinds[i].needs_pins && !paths[i].empty()) return true;
  }
  return false;
}

Outputs::Outputs(const OutputPaths& paths, OutputKind::Verb OutputKind::*verb, bool shows_pins) {
  for (std::size_t i = 0; i < kOutputCount; ++i) {
    const OutputKind& kind = kOutputKinds[i];
    if (paths[i].empty()) continue;
    std::ostream& stream =
        paths[i] == kStandardError ? std::cerr : Add(paths[i], kind.rest).Stream();
    outputs_.push_back((kind.*verb).make(stream, shows_pins));
    AddTo(listeners, *outputs_.back());
    AddTo(serve_listeners, *outputs_.back());
    AddTo(recorders, *outputs_.back());
  }
  begun_ = files_.size();
}

OutputFile& Outputs::Add(const std::string& path, OutputFile::Rest rest) {
  files_.push_back(std::make_unique<OutputFile>(path, rest));
  if (path == "-") standard_output_ = files_.back().get();
  return *files_.back();
}

void Outputs::Begin() {
  for (std::size_t i = 0; i < begun_; ++i) files_[i]->Begin();
  for (const auto& output : outputs_) output->Begin();
}

void Outputs::Flush() {
  for (const auto& file : files_) {
    file->Stream().flush();
    file->ThrowIfCut();
  }
}

std::vector<std::string> Outputs::TakeLosses() {
  std::vector<std::string> losses;
  for (const auto& output : outputs_) {
    for (std::string& loss : output->TakeLosses()) losses.push_back(std::move(loss));
  }
  return losses;
}

std::vector<std::string> Outputs::Complete(const PageHead& head) {
  for (const auto& output : outputs_) output->End(head);
  return CloseAll(files_);
}

}  // namespace icehost
