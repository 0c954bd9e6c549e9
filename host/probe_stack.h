// The probe that the user chose, with the recorders of its pins.
#ifndef ICESCRIPT_HOST_PROBE_STACK_H_
#define ICESCRIPT_HOST_PROBE_STACK_H_

#include <memory>
#include <optional>
#include <vector>

#include "host/pins/recording_port.h"
#include "host/probe/pin_probe.h"
#include "host/tables/probes.h"

namespace icehost {

class ProbeStack {
 public:
  // `wire_mode` is the CDI_ANSWER_ in force at the start. Without recorders, which must outlive
  // this object, nothing records the pins. Connects where the probe is across a network; throws
  // IoError.
  ProbeStack(const ProbeOptions& options, int wire_mode,
             const std::vector<StepRecorder*>& recorders, PinProbe::Doubt doubt);

  // The probe, with its pins recorded.
  Probe& Top() { return *probe_; }
  // Marks the step that follows as the first of an operation of the script.
  void BeginOperation(const CallSource& source);
  // The number of writes to the pins, including those that the recorders are yet to see.
  std::size_t Steps() const { return recording_ != nullptr ? recording_->Steps() : 0; }
  // The cycles of TCK so far; unknown where the probe does not show its pins.
  std::optional<long> TckCycles() const;

 private:
  std::unique_ptr<PinPort> port_;             // null where the probe does not show its pins
  std::unique_ptr<RecordingPort> recording_;  // null where nothing records them
  std::unique_ptr<Probe> probe_;
  PinProbe* pin_probe_ = nullptr;  // probe_, where it is made of pins
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_STACK_H_
