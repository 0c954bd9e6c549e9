// The probe that the plug-in sees: it passes each call on and reports it.
#ifndef ICESCRIPT_HOST_OBSERVED_PROBE_H_
#define ICESCRIPT_HOST_OBSERVED_PROBE_H_

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "host/events/events.h"
#include "host/events/follower.h"
#include "host/pins/recording_port.h"
#include "host/probe/pin_port.h"
#include "host/probe/pin_probe.h"
#include "host/probe/probe.h"
#include "host/run_events.h"
#include "host/system/interrupt.h"
#include "host/tables/probes.h"

namespace icehost {

// A call that the probe refuses with Unsupported returns -1, after the reason was reported; so does
// a call whose values the follower does not accept. Each call throws Interrupted after a signal.
class ObservedProbe : public Probe {
 public:
  // Opens the probe, connecting to it if it is across a network; throws IoError. `wire_mode` is the
  // CDI_ANSWER_ in force at the start. The steps of its pins go to `events` if `record_steps`. All
  // references must stay valid. With `confirms_chain`, the first scan on pins fails if the chain is
  // not as the options or the script say.
  ObservedProbe(const ProbeOptions& options, int wire_mode, bool record_steps, bool confirms_chain,
                Follower& follower, RunEvents& events, Rescue& rescue);

  int Config(int code, int value) override;
  int Reset(int kind) override;
  int Insert(int ir_bits, const std::uint8_t* ir, int dr_bits, const std::uint8_t* dr) override;
  int Execute(std::uint8_t* capture) override;
  int Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) override;
  void Flush() override { probe_->Flush(); }
  // If the probe cannot do it, the next scan must at least load an instruction, or it fails.
  bool ResetTapBeforeScan() override;
  std::optional<long> TckCycles() const override { return probe_->TckCycles(); }

  const RunCounts& Counts() const { return counts_; }

 private:
  void Begin(const char* function, bool begins_operation);
  template <class Ask>
  int Guard(Ask ask);
  void End(const HostCall& call, int result, std::vector<Comparison> comparisons = {});
  void KeepCaptured(const std::uint8_t* capture);
  void BeginRecording();
  void FindPlace();
  void ReadPlace();

  std::unique_ptr<PinPort> port_;             // null if the probe shows no pins
  std::unique_ptr<RecordingPort> recording_;  // null if nothing records them
  std::unique_ptr<Probe> probe_;
  PinProbe* pins_ = nullptr;  // the probe, if it moves the TAPs itself
  ChainPlace place_;
  bool measures_place_ = false;
  bool confirms_chain_ = false;
  bool found_place_ = false;  // as far as the options ask for it
  bool lacks_reset_ = false;  // since the last scan
  bool played_pins_ = false;  // by a GPIO script
  Follower& follower_;
  RunEvents& events_;
  Rescue& rescue_;
  CallSource source_;           // of the operation under way
  std::size_t begin_step_ = 0;  // of the call under way
  Scan scan_;                   // the one under way
  int wire_mode_ = 0;
  RunCounts counts_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OBSERVED_PROBE_H_
