#include "host/probe_stack.h"

#include <fmt/format.h>

#include <utility>

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
  auto pin_probe = std::make_unique<PinProbe>(*top, wire_mode_, two_wire_);
  pin_probe_ = pin_probe.get();
  probe_ = std::move(pin_probe);
  return *probe_;
}

void ProbeStack::BeginOperation(const CallSource& source) {
  if (recording_ == nullptr) return;
  recording_->BeginOperation(source.section != nullptr ? fmt::format("[{}]", *source.section)
                                                       : fmt::format("line {}", source.line),
                             source);
}

std::optional<long> ProbeStack::TckCycles() const {
  if (pin_probe_ == nullptr) return std::nullopt;
  return pin_probe_->TckCycles();
}

}  // namespace icehost
