#include "host/probe_stack.h"

#include <fmt/format.h>

#include "host/open_probe.h"
#include "host/system/errors.h"

namespace icehost {

ProbeStack::ProbeStack(const ProbeOptions& options, int wire_mode, bool records_pins)
    : wire_mode_(wire_mode), two_wire_(options.choice.kind == ProbeChoice::Kind::kSim) {
  if (records_pins && options.choice.kind == ProbeChoice::Kind::kOpenocd) {
    throw IoError("OpenOCD shows no pins: no waveform of it");
  }
  port_ = OpenPins(options);
  if (port_ == nullptr) probe_ = OpenOpenocd(options);
}

Probe& ProbeStack::Build(const std::vector<StepRecorder*>& recorders) {
  if (port_ == nullptr) return *probe_;
  if (!recorders.empty()) recording_ = std::make_unique<RecordingPort>(*port_, recorders);
  PinPort* top = port_.get();
  if (recording_ != nullptr) top = recording_.get();
  probe_ = std::make_unique<PinProbe>(*top, wire_mode_, two_wire_);
  return *probe_;
}

void ProbeStack::BeginOperation(const CallSource& source) {
  if (recording_ == nullptr) return;
  recording_->BeginOperation(source.section != nullptr ? fmt::format("[{}]", *source.section)
                                                       : fmt::format("line {}", source.line),
                             source);
}

}  // namespace icehost
