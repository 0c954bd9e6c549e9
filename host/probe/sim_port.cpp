#include "host/probe/sim_port.h"

#include "host/target/tap_tracker.h"

namespace icehost {

void SimPort::Write(int levels, int enables) {
  const int before = wires_;
  enables_ = enables & GPIO_PIN_ALL;
  wires_ = WireLevels(levels & enables_, enables_);
  const auto high = [this](int pin) { return (wires_ & pin) != 0; };

  target_.HoldRegisters(!high(GPIO_PIN_NRST));
  if (!high(GPIO_PIN_TRST)) {
    target_.ResetTap();
  } else if ((~before & wires_ & GPIO_PIN_TCK) != 0) {
    target_.RaiseTck(high(GPIO_PIN_TMS), high(GPIO_PIN_TDI));
  } else if ((before & ~wires_ & GPIO_PIN_TCK) != 0) {
    target_.LowerTck();
  }
}

int SimPort::Read() {
  // A probe that drives TDO itself reads what it drives.
  const bool target_low = !target_.Tdo().value_or(true) && (enables_ & GPIO_PIN_TDO) == 0;
  return target_low ? wires_ & ~GPIO_PIN_TDO : wires_;
}

}  // namespace icehost
