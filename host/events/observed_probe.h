// Wraps the probe that the plug-in sees, and tells every call to those who listen.
#ifndef ICESCRIPT_HOST_EVENTS_OBSERVED_PROBE_H_
#define ICESCRIPT_HOST_EVENTS_OBSERVED_PROBE_H_

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "host/events/call_guide.h"
#include "host/events/events.h"
#include "host/probe/probe.h"
#include "host/target/bits.h"

namespace icehost {

struct RunCounts {
  long operations = 0;  // pin operations, scans, resets, wire settings
  long bits = 0;        // shifted through an IR or DR
  long reads = 0;       // pin reads, and scans
};

// Calls that the probe refuses with Unsupported fail here with -1, after the reason was told, and
// so do those whose values the guide does not accept. Each call throws Interrupted once the user
// has pressed Ctrl-C.
class ObservedProbe : public Probe {
 public:
  struct Callbacks {
    // Why the probe refuses a call.
    std::function<void(const std::string& why)> refused;
    // Why a scan may not have reached a TAP; may throw Unsupported to fail the call.
    std::function<void(const std::string& why)> doubt;
    // Called before every call: whether an operation begins with it, rather than belong to one.
    std::function<void(bool begins_operation)> begin;
    // Steps of the pins so far.
    std::function<std::size_t()> steps;
  };
  struct Call {
    const char* function = nullptr;
    CallSource source;
  };

  // `probe`, `guide` and the listeners must outlive this object.
  ObservedProbe(Probe& probe, CallGuide& guide, std::vector<EventListener*> listeners,
                Callbacks callbacks);

  int Config(int code, int value) override;
  int Reset(int kind) override;
  int Insert(int ir_bits, const std::uint8_t* ir, int dr_bits, const std::uint8_t* dr) override;
  int Execute(std::uint8_t* capture) override;
  int Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) override;
  void Flush() override { probe_.Flush(); }

  const RunCounts& Counts() const { return counts_; }
  // The call that is under way, or that threw; without a function where there is none.
  const Call& UnderWay() const { return under_way_; }
  // Nothing is under way any longer.
  void Leave() { under_way_.function = nullptr; }

 private:
  void Begin(bool begins_operation);
  template <class Ask>
  int Guard(const char* function, Ask ask);
  template <class MakeEvent>
  void Tell(MakeEvent make_event);

  Probe& probe_;
  CallGuide& guide_;
  std::vector<EventListener*> listeners_;
  Callbacks callbacks_;
  Call under_way_;
  std::size_t begin_step_ = 0;  // of it
  RunCounts counts_;
  // Of the scan under way.
  int wire_mode_ = 0;
  int ir_bits_ = 0;
  int dr_bits_ = 0;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_OBSERVED_PROBE_H_
