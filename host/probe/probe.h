#ifndef ICESCRIPT_HOST_PROBE_PROBE_H_
#define ICESCRIPT_HOST_PROBE_PROBE_H_

#include <cstdint>
#include <optional>
#include <string>

#include "entry/icescript.h"
#include "host/target/chain_place.h"

namespace icehost {

// The index of the first byte of the captured DR in the bytes that Execute stores. Over two wires,
// the DR begins one byte later. The bytes before this index contain the captured IR.
constexpr int kDrCaptureByte = 2;

// A debug probe. The LinkHandle that icehost passes to the plug-in points to it. Config, Reset,
// Insert, Execute and Gpio have the arguments and results of the link_ functions in
// entry/icescript.h. They and Flush may throw IoError, Interrupted and Unsupported.
class Probe {
 public:
  virtual ~Probe() = default;

  virtual int Config(int code, int value) = 0;
  virtual int Reset(int kind) = 0;
  virtual int Insert(int ir_bits, const std::uint8_t* ir, int dr_bits, const std::uint8_t* dr) = 0;
  virtual int Execute(std::uint8_t* capture) = 0;
  virtual int Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) = 0;
  // Ends a script: sends buffered operations, and returns after the receiver has answered.
  virtual void Flush() = 0;
  // Makes the next scan begin with a TAP reset. Returns false if the probe cannot do this.
  virtual bool ResetTapBeforeScan() { return false; }

  // Returns the pins (GPIO_PIN_ bits) whose levels Gpio reads from the wires. For the other pins,
  // Gpio returns the levels that the probe drives.
  virtual int ReportedPins() const { return GPIO_PIN_ALL; }
  // Returns whether Execute stores the captured IR.
  virtual bool CapturesIr() const { return true; }
  // Returns why the last scan may not have reached a TAP; empty if nothing suggests that.
  virtual std::string Doubt() const { return ""; }
  // Returns the bits of the last scan in the whole chain. Returns null if the TAP is alone, or if
  // the probe hides the other TAPs.
  virtual const ChainScan* WholeChain() const { return nullptr; }
  // Returns the number of TCK cycles so far; nothing if the probe does not know it.
  virtual std::optional<long> TckCycles() const { return std::nullopt; }
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_PROBE_H_
