#include "host/outputs.h"

#include <filesystem>
#include <iostream>

#include "host/system/errors.h"

namespace icehost {

Outputs::Outputs(const RunCommand& command) : command_(command) {
  if (!command.trace.empty()) {
    trace.emplace(command.trace == "-" ? std::cerr : Open(command.trace));
    listeners.push_back(&*trace);
  }
  if (!command.json.empty()) {
    json.emplace(Open(command.json));
    listeners.push_back(&*json);
  }
  if (!command.vcd.empty()) {
    vcd.emplace(Open(command.vcd));
    recorders.push_back(&*vcd);
  }
  if (!command.svg.empty()) {
    svg_stream_ = &Open(command.svg);
    svg.emplace();
    recorders.push_back(&*svg);
  }
}

void Outputs::Complete() {
  if (vcd.has_value()) vcd->End();
  if (svg.has_value()) svg->Write(*svg_stream_);
  for (const auto& file : files) file->Close();
}

std::ostream& Outputs::Open(const std::string& path) {
  for (const std::string& script : command_.scripts) {
    std::error_code none;  // neither need exist
    if (std::filesystem::equivalent(path, script, none)) {
      throw IoError(path + ": is a script to run, and would be overwritten");
    }
  }
  files.push_back(std::make_unique<OutputFile>(path));
  return files.back()->Stream();
}

}  // namespace icehost
