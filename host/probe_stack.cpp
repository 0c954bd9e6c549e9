#include "host/probe_stack.h"

#include <fmt/format.h>

#include <utility>

namespace icehost {

ProbeStack::ProbeStack(const ProbeOptions& options, int wire_mode,
                       const std::vector<StepRecorder*>& recorders, PinProbe::Doubt doubt) {
  const ProbeKind& kind = *options.kind;
  if (!kind.ShowsPins()) {
    probe_ = kind.open_scans(options);
    return;
  }
  port_ = kind.open_pins(options);
  PinPort* top = port_.get();
  if (!recorders.empty()) {
    recording_ = std::make_unique<RecordingPort>(*port_, recorders);
    top = recording_.get();
  }
  auto pin_probe = std::make_unique<PinProbe>(*top, wire_mode, kind.two_wire, std::move(doubt));
  pin_probe_ = pin_probe.get();
  probe_ = std::move(pin_probe);
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
