// The pins of the simulated probe, with the simulated target behind them.
#ifndef ICESCRIPT_HOST_PROBE_SIM_PORT_H_
#define ICESCRIPT_HOST_PROBE_SIM_PORT_H_

#include <utility>

#include "entry/icescript.h"
#include "host/probe/pin_port.h"
#include "host/target/target.h"

namespace icehost {

class SimPort : public PinPort {
 public:
  explicit SimPort(const TargetOptions& options) : target_(options) {}

  void Write(int levels, int enables) override;
  int Read() override;
  void SampleTdo() override { samples_.push_back((Read() & GPIO_PIN_TDO) != 0); }
  Bits CollectTdo() override { return std::exchange(samples_, {}); }

 private:
  Target target_;
  int wires_ = GPIO_PIN_ALL;  // levels as the probe makes them; nothing is enabled at first
  int enables_ = 0;
  Bits samples_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_SIM_PORT_H_
