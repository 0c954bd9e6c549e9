#include "host/serve_record.h"

#include <fmt/format.h>

#include <iostream>

namespace icehost {

ServeRecord::ServeRecord(const RecordFiles& files) : decoder_(*this) {
  if (!files.trace.empty()) {
    trace_.emplace(files.trace == kStandardError ? std::cerr : Open(files.trace));
    listeners_.push_back(&*trace_);
  }
  if (!files.json.empty()) {
    json_.emplace(Open(files.json));
    listeners_.push_back(&*json_);
  }
  if (!files.vcd.empty()) {
    vcd_.emplace(Open(files.vcd));
    recorders_.push_back(&*vcd_);
  }
  if (!files.html.empty()) {
    page_stream_ = &Open(files.html, OutputFile::Rest::kNothing);
    page_.emplace();
    listeners_.push_back(&*page_);
    recorders_.push_back(&*page_);
  }
}

PinPort& ServeRecord::Begin(PinPort& port) {
  if (!IsAskedFor()) return port;
  for (const auto& file : files_) file->Begin();
  if (json_.has_value()) json_->Begin();
  recorders_.push_back(&decoder_);
  Flush();
  return port_.emplace(port, recorders_);
}

void ServeRecord::OnClient(const ServedClient& client) {
  for (ServeListener* const listener : listeners_) listener->OnClient(client, Steps());
  if (vcd_.has_value()) vcd_->BeginOperation(Steps(), fmt::format("client {}", client.number));
}

void ServeRecord::OnClientLeft(const ServedClient& client) {
  for (ServeListener* const listener : listeners_) listener->OnClientLeft(client, Steps());
}

void ServeRecord::Flush() {
  for (const auto& file : files_) {
    file->Stream().flush();
    file->ThrowIfCut();
  }
}

std::vector<std::string> ServeRecord::Complete(const std::string& error, const PageHead& head) {
  decoder_.End();
  for (ServeListener* const listener : listeners_) listener->OnEnd(error);
  if (vcd_.has_value()) vcd_->End();
  if (page_.has_value()) page_->Write(*page_stream_, head);
  return CloseAll(files_);
}

std::ostream& ServeRecord::Open(const std::string& path, OutputFile::Rest rest) {
  files_.push_back(std::make_unique<OutputFile>(path, rest));
  return files_.back()->Stream();
}

void ServeRecord::OnScan(const TapScan& scan) {
  ++scans_;
  for (ServeListener* const listener : listeners_) listener->OnScan(scan);
}

void ServeRecord::OnTapReset(bool by_trst, StepRange steps) {
  for (ServeListener* const listener : listeners_) listener->OnTapReset(by_trst, steps);
}

void ServeRecord::OnIdle(long cycles, StepRange steps) {
  for (ServeListener* const listener : listeners_) listener->OnIdle(cycles, steps);
}

void ServeRecord::OnResetPins(int levels, StepRange steps) {
  for (ServeListener* const listener : listeners_) listener->OnResetPins(levels, steps);
}

}  // namespace icehost
