// A debug probe as the plug-in sees it.
#ifndef ICESCRIPT_HOST_PROBE_PROBE_H_
#define ICESCRIPT_HOST_PROBE_PROBE_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "entry/icescript.h"
#include "host/target/chain_place.h"

namespace icehost {

// Where a probe stores the captured DR; the captured IR is in the bytes before it. On the 2-wire
// interface an extra byte separates them.
constexpr int kDrCaptureByte = 2;

// The LinkHandle that icehost passes to the plug-in points to a Probe. Config to Gpio take the
// arguments of the link_ functions of entry/icescript.h and return their results. They and Flush
// may throw IoError, Interrupted, or Unsupported for what the probe cannot do.
class Probe {
 public:
  virtual ~Probe() = default;

  virtual int Config(int code, int value) = 0;
  virtual int Reset(int kind) = 0;
  virtual int Insert(int ir_bits, const std::uint8_t* ir, int dr_bits, const std::uint8_t* dr) = 0;
  virtual int Execute(std::uint8_t* capture) = 0;
  virtual int Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) = 0;
  // Ends a script: sends what is buffered, and returns after its receiver has answered.
  virtual void Flush() = 0;
  // Makes the next scan begin with a TAP reset. Returns false if the probe cannot do that.
  virtual bool ResetTapBeforeScan() { return false; }

  // The GPIO_PIN_ bits whose levels Gpio reads from the wires. The others are as the probe drives
  // them.
  virtual int ReportedPins() const { return GPIO_PIN_ALL; }
  // Whether Execute stores the captured IR.
  virtual bool CapturesIr() const { return true; }
  // Why the scan executed last may not have reached a TAP; empty if nothing speaks against it.
  virtual std::string Doubt() const { return ""; }
  // The scan executed last as the whole chain saw it. Null if the TAP is alone, or the probe hides
  // the others.
  virtual const ChainScan* WholeChain() const { return nullptr; }
  // Writes to its pins so far; 0 if it shows none.
  virtual std::size_t Steps() const { return 0; }
  // TCK cycles so far; nothing if it shows no pins.
  virtual std::optional<long> TckCycles() const { return std::nullopt; }
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_PROBE_H_
