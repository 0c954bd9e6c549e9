#ifndef ICESCRIPT_HOST_PINS_RECORDING_PORT_H_
#define ICESCRIPT_HOST_PINS_RECORDING_PORT_H_

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/events/events.h"
#include "host/probe/pin_port.h"
#include "host/target/tap.h"

namespace icehost {

// The state of the pins from one write to the next.
struct PinStep {
  int wires;                    // the levels on the wires, including TDO (GPIO_PIN_ bits)
  std::optional<TapState> tap;  // nothing until the TAP is first reset
  bool drives_tdo;              // the probe drives TDO, and so reads its own level
};

class StepRecorder {
 public:
  virtual ~StepRecorder() = default;
  // Begins an operation, whose first step follows. `source` is valid during the call.
  virtual void BeginOperation(const std::string& /*name*/, const CallSource& /*source*/) {}
  virtual void Record(const PinStep& step) = 0;
};

// Wraps another port, and passes every step of its pins to recorders. Samples TDO after every
// write. The recorders receive the steps in order when the port has answered, at the latest during
// a Read, CollectTdo or Flush.
class RecordingPort : public PinPort {
 public:
  // `port` and the recorders must outlive this object.
  RecordingPort(PinPort& port, std::vector<StepRecorder*> recorders);

  void Write(int levels, int enables) override;
  int Read() override;
  void SampleTdo() override;
  Bits CollectTdo() override;
  void Flush() override;
  int ReportedPins() const override { return port_.ReportedPins(); }
  std::optional<int> IrLength() const override { return port_.IrLength(); }
  void CheckAlive() override { port_.CheckAlive(); }

  // Begins an operation. The recorders receive it when it first writes the pins. The objects that
  // `source` points to must exist until the next Flush.
  void BeginOperation(std::string name, const CallSource& source) {
    next_ = Operation{std::move(name), source};
  }
  // Returns the number of writes so far.
  std::size_t Steps() const { return steps_; }
  // Returns the number of writes that the recorders have not received yet.
  std::size_t Unrecorded() const { return pending_.size(); }

 private:
  void Settle();

  PinPort& port_;
  std::vector<StepRecorder*> recorders_;
  std::size_t steps_ = 0;
  TapTracker tap_;
  struct Operation {
    std::string name;
    CallSource source;
  };
  std::optional<Operation> next_;
  struct Pending {
    PinStep step;
    std::optional<Operation> begins;
    int user_samples;  // requested between this write and the next
  };
  std::vector<Pending> pending_;
  std::size_t early_samples_ = 0;  // requested before the first pending write
  Bits samples_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PINS_RECORDING_PORT_H_
