#ifndef ICESCRIPT_HOST_PROBE_PIN_PORT_H_
#define ICESCRIPT_HOST_PROBE_PIN_PORT_H_

#include <optional>

#include "entry/icescript.h"
#include "host/target/bits.h"

namespace icehost {

// The six pins of a probe. Levels and enables are GPIO_PIN_ bits (entry/icescript.h). Pins that are
// not enabled float high. Every function may throw IoError and Interrupted, and Unsupported if the
// probe does not support the operation.
class PinPort {
 public:
  virtual ~PinPort() = default;

  // Sets all pins at the same moment.
  virtual void Write(int levels, int enables) = 0;
  // Returns the present levels of all pins.
  virtual int Read() = 0;

  // Requests a sample of TDO between the previous and the next write, for CollectTdo.
  virtual void SampleTdo() = 0;
  // Returns the samples since the last call, the first one first.
  virtual Bits CollectTdo() = 0;
  // Sends buffered writes, and returns after the receiver has answered. The caller must have
  // collected all samples.
  virtual void Flush() {}
  // Returns the pins (GPIO_PIN_ bits) whose levels Read takes from the wires. For the other pins,
  // Read returns the levels that the probe drives.
  virtual int ReportedPins() const { return GPIO_PIN_ALL; }
  // Returns the length of the target's IR in bits, if the port knows it.
  virtual std::optional<int> IrLength() const { return std::nullopt; }
  // Throws IoError if the connection is lost. Does not wait. For use while no answer is expected.
  virtual void CheckAlive() {}
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_PIN_PORT_H_
