// Six pins of a probe, the lowest level that a probe may offer.
#ifndef ICESCRIPT_HOST_PROBE_PIN_PORT_H_
#define ICESCRIPT_HOST_PROBE_PIN_PORT_H_

#include "host/target/bits.h"

namespace icehost {

// Levels and enables are GPIO_PIN_ bits (entry/icescript.h). Pins that are not enabled float high.
// Every function may throw IoError, Interrupted, or Unsupported where the pins cannot do that.
class PinPort {
 public:
  virtual ~PinPort() = default;

  // Sets all pins at one moment.
  virtual void Write(int levels, int enables) = 0;
  // The levels of all pins now.
  virtual int Read() = 0;

  // Notes TDO as it is between the writes before and after, for the next CollectTdo. A port across
  // a network need not wait for the answer.
  virtual void SampleTdo() = 0;
  // The samples since the last call, in order.
  virtual Bits CollectTdo() = 0;
  // Ends what is under way: buffered writes go out, and whoever takes them has answered since.
  // Everything sampled has been collected before.
  virtual void Flush() {}
  // Throws IoError where the pins are lost, as far as that is known without waiting. To be called
  // while nothing is under way.
  virtual void CheckAlive() {}
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_PIN_PORT_H_
