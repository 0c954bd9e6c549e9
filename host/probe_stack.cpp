#include "host/probe_stack.h"

#include <utility>

#include "host/probe/bitbang_port.h"
#include "host/probe/openocd_probe.h"
#include "host/probe/sim_port.h"
#include "host/system/errors.h"

namespace icehost {

ProbeStack::ProbeStack(const RunCommand& command)
    : wire_mode_(command.wire_mode), two_wire_(command.probe.kind == ProbeChoice::Kind::kSim) {
  const auto connect = [&] { return Socket::Connect(command.probe.endpoint, command.timeout); };
  switch (command.probe.kind) {
    case ProbeChoice::Kind::kSim:
      port_ = std::make_unique<SimPort>(command.target);
      break;
    case ProbeChoice::Kind::kBitbang:
      port_ = std::make_unique<BitbangPort>(connect());
      break;
    case ProbeChoice::Kind::kOpenocd:
      if (!command.vcd.empty() || !command.svg.empty()) {
        throw IoError("OpenOCD shows no pins: no waveform of it");
      }
      probe_ = std::make_unique<OpenocdProbe>(connect(), command.probe.tap);
      break;
  }
}

Probe& ProbeStack::Build(const std::vector<StepRecorder*>& recorders, PinProbe::Doubt doubt) {
  if (port_ == nullptr) return *probe_;
  if (!recorders.empty()) recording_ = std::make_unique<RecordingPort>(*port_, recorders);
  PinPort* top = port_.get();
  if (recording_ != nullptr) top = recording_.get();
  auto pin_probe = std::make_unique<PinProbe>(*top, wire_mode_, two_wire_, std::move(doubt));
  pin_probe_ = pin_probe.get();
  probe_ = std::move(pin_probe);
  return *probe_;
}

std::optional<long> ProbeStack::TckCycles() const {
  if (pin_probe_ == nullptr) return std::nullopt;
  return pin_probe_->TckCycles();
}

}  // namespace icehost
