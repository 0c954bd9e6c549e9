#include "host/outputs.h"

#include <iostream>

namespace icehost {

Outputs::Outputs(const RunCommand& command) {
  using Rest = OutputFile::Rest;
  if (!command.record.trace.empty()) {
    trace.emplace(command.record.trace == kStandardError
                      ? std::cerr
                      : Open(command.record.trace, Rest::kLines));
    listeners.push_back(&*trace);
  }
  if (!command.record.json.empty()) {
    json.emplace(Open(command.record.json, Rest::kLines));
    listeners.push_back(&*json);
  }
  if (!command.record.vcd.empty()) {
    vcd.emplace(Open(command.record.vcd, Rest::kLines));
    recorders.push_back(&*vcd);
  }
  if (!command.record.svg.empty()) {
    svg_stream_ = &Open(command.record.svg, Rest::kNothing);
    svg.emplace();
    listeners.push_back(&*svg);
    recorders.push_back(&*svg);
  }
  if (!command.record.html.empty()) {
    page_stream_ = &Open(command.record.html, Rest::kNothing);
    page.emplace();
    listeners.push_back(&*page);
    recorders.push_back(&*page);
  }
  if (!command.record.svf.empty()) OpenSvf(command);
  if (!command.learn.empty()) {
    Open(command.learn, Rest::kNothing);
    learned_ = files_.back().get();
  }
}

void Outputs::Begin() {
  for (const auto& file : files_) {
    if (file.get() != learned_) file->Begin();
  }
  if (json.has_value()) json->Begin();
  if (svf.has_value()) svf->Begin();
}

// A run that fails leaves the script that was learned before it.
void Outputs::Learn(const std::string& script) {
  learned_->Begin();
  learned_->Stream() << script;
}

std::vector<std::string> Outputs::Complete(const PageHead& head) {
  if (vcd.has_value()) vcd->End();
  if (svg.has_value()) svg->Write(*svg_stream_);
  if (page.has_value()) page->Write(*page_stream_, head);
  if (svf_pins.has_value()) svf_pins->End();
  return CloseAll(files_);
}

std::vector<std::string> Outputs::TakeLosses() {
  return svf.has_value() ? svf->TakeLosses() : std::vector<std::string>();
}

void Outputs::OpenSvf(const RunCommand& command) {
  svf.emplace(Open(command.record.svf, OutputFile::Rest::kLines));
  if (command.probe.choice.kind == ProbeChoice::Kind::kOpenocd) {
    listeners.push_back(&svf_calls.emplace(*svf));
  } else {
    listeners.push_back(&svf_pins.emplace(*svf));
    recorders.push_back(&*svf_pins);
  }
}

std::ostream& Outputs::Open(const std::string& path, OutputFile::Rest rest) {
  files_.push_back(std::make_unique<OutputFile>(path, rest));
  if (path == "-") standard_output_ = files_.back().get();
  return files_.back()->Stream();
}

}  // namespace icehost
