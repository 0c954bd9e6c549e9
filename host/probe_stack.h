// The probe that the user chose, under what records its pins.
#ifndef ICESCRIPT_HOST_PROBE_STACK_H_
#define ICESCRIPT_HOST_PROBE_STACK_H_

#include <memory>
#include <optional>
#include <vector>

#include "host/options/commands.h"
#include "host/pins/recording_port.h"
#include "host/probe/pin_probe.h"

namespace icehost {

class ProbeStack {
 public:
  // `wire_mode` is the CDI_ANSWER_ in force at the start. Connects where the probe is across a
  // network; throws IoError, also where the pins are to be recorded and the probe shows none.
  ProbeStack(const ProbeOptions& options, int wire_mode, bool records_pins);

  // The probe, with its pins recorded; to be called once. The recorders must outlive this object.
  Probe& Build(const std::vector<StepRecorder*>& recorders);
  bool ShowsPins() const { return port_ != nullptr; }
  // An operation of the script begins.
  void BeginOperation(const CallSource& source);
  // Writes to the pins that the recorders have seen or will see.
  std::size_t Steps() const { return recording_ != nullptr ? recording_->Steps() : 0; }
  // Unknown where the probe does not show its pins.
  std::optional<long> TckCycles() const { return probe_->TckCycles(); }

 private:
  int wire_mode_;
  bool two_wire_;
  std::unique_ptr<PinPort> port_;  // null where the probe does not show its pins
  std::unique_ptr<RecordingPort> recording_;
  std::unique_ptr<Probe> probe_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_STACK_H_
