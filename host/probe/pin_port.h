// Six pins of a probe.
#ifndef ICESCRIPT_HOST_PROBE_PIN_PORT_H_
#define ICESCRIPT_HOST_PROBE_PIN_PORT_H_

#include <optional>

#include "entry/icescript.h"
#include "host/target/bits.h"

namespace icehost {

// Levels and enables are GPIO_PIN_ bits (entry/icescript.h). Pins that are not enabled float high.
// Every function may throw IoError, Interrupted, or Unsupported if the pins cannot do that.
class PinPort {
 public:
  virtual ~PinPort() = default;

  // Sets all pins at one moment.
  virtual void Write(int levels, int enables) = 0;
  // Returns the levels of all pins now.
  virtual int Read() = 0;

  // Samples TDO between the writes before and after, for the next CollectTdo. A port across a
  // network need not wait for the answer.
  virtual void SampleTdo() = 0;
  // Returns the samples since the last call, in order.
  virtual Bits CollectTdo() = 0;
  // Sends buffered writes, and returns after their receiver has answered. To be called after
  // everything sampled was collected.
  virtual void Flush() {}
  // The GPIO_PIN_ bits whose levels Read takes from the wires. The others are as the probe drives
  // them.
  virtual int ReportedPins() const { return GPIO_PIN_ALL; }
  // The length of the target's IR in bits, if the port knows it.
  virtual std::optional<int> IrLength() const { return std::nullopt; }
  // Throws IoError if the pins are lost, as far as that is known without waiting. To be called
  // while nothing is under way.
  virtual void CheckAlive() {}
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_PIN_PORT_H_
