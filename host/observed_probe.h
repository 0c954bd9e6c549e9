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

// The probe that the plug-in calls. It passes each call on to the probe of --probe, and reports the
// call. If that probe throws Unsupported, the call reports the reason and returns -1. A call also
// returns -1 if the follower rejects the values read. Each call throws Interrupted after a signal.
class ObservedProbe : public Probe {
 public:
  // Opens the probe, and connects to it if it is across a network. Throws IoError. `wire_mode` is
  // the CDI_ANSWER_ value at the start. If `record_steps` is true, `events` receives the steps of
  // the pins. If `confirms_chain` is true, the first scan through pins fails unless the chain
  // matches the options. The follower, the events and the rescue must outlive this object.
  ObservedProbe(const ProbeOptions& options, int wire_mode, bool record_steps, bool confirms_chain,
                Follower& follower, RunEvents& events, Rescue& rescue);

  int Config(int code, int value) override;
  int Reset(int kind) override;
  int Insert(int ir_bits, const std::uint8_t* ir, int dr_bits, const std::uint8_t* dr) override;
  int Execute(std::uint8_t* capture) override;
  int Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) override;
  void Flush() override { probe_->Flush(); }
  // If this returns false, the next scan fails unless it loads an instruction.
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
  // Returns the number of bits in each register of a scan that are not shifted through the TAP.
  int UnshiftedBits() const { return wire_mode_ == CDI_ANSWER_2WIRE ? 8 : 0; }
  // Returns the number of recorded steps so far.
  std::size_t Steps() const { return recording_ != nullptr ? recording_->Steps() : 0; }
  void FindPlace();
  void ReadPlace();

  std::unique_ptr<PinPort> port_;             // null if the probe gives no access to pins
  std::unique_ptr<RecordingPort> recording_;  // null if the steps of the pins are not recorded
  std::unique_ptr<Probe> probe_;
  PinProbe* pins_ = nullptr;  // probe_ if it is a PinProbe, else null
  ChainPlace place_;
  bool measures_place_ = false;
  bool confirms_chain_ = false;
  bool found_place_ = false;  // FindPlace has run
  bool lacks_reset_ = false;  // the probe cannot reset the TAP before the next scan
  bool played_pins_ = false;  // a GPIO script has run
  Follower& follower_;
  RunEvents& events_;
  Rescue& rescue_;
  CallSource source_;           // of the current operation
  std::size_t begin_step_ = 0;  // of the current call
  Scan scan_;                   // the current or last scan
  int wire_mode_ = 0;
  RunCounts counts_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OBSERVED_PROBE_H_
