#include "host/outputs.h"

#include <iostream>

#include "host/system/errors.h"

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
  std::vector<std::string> failures;
  for (const auto& file : files_) {
    try {
      file->Close();
    } catch (const IoError& error) {
      failures.emplace_back(error.what());
    }
  }
  return failures;
}

std::ostream& Outputs::Open(const std::string& path, OutputFile::Rest rest) {
  files_.push_back(std::make_unique<OutputFile>(path, rest));
  if (path == "-") standard_output_ = files_.back().get();
  return files_.back()->Stream();
}

}  // namespace icehost
