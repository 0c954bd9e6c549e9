// The probe that the user chose, under what records its pins.
#ifndef ICESCRIPT_HOST_PROBE_STACK_H_
#define ICESCRIPT_HOST_PROBE_STACK_H_

#include <memory>
#include <optional>
#include <vector>

#include "host/command_line.h"
#include "host/pin_probe.h"
#include "host/recording_port.h"

namespace icehost {

class ProbeStack {
 public:
  // Connects where the probe is across a network; throws IoError. The recorders must outlive this
  // object.
  ProbeStack(const RunCommand& command, const std::vector<StepRecorder*>& recorders);

  Probe& Top() { return *probe_; }
  // Lets what is buffered go out and be recorded.
  void Flush() const;
  // Writes to the pins that the recorders have seen or will see.
  std::size_t Steps() const { return recording_ != nullptr ? recording_->Steps() : 0; }
  // Unknown where the probe does not show its pins.
  std::optional<long> TckCycles() const;

 private:
  std::unique_ptr<PinPort> port_;
  std::unique_ptr<RecordingPort> recording_;
  std::unique_ptr<Probe> probe_;
  PinProbe* pin_probe_ = nullptr;  // probe_, where it is one
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_STACK_H_
