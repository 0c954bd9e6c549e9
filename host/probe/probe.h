// A debug probe as the plug-in sees it.
#ifndef ICESCRIPT_HOST_PROBE_PROBE_H_
#define ICESCRIPT_HOST_PROBE_PROBE_H_

#include <cstdint>
#include <optional>
#include <string>

namespace icehost {

// Where a probe stores the captured DR; the captured IR goes to the bytes before it. On the 2-wire
// interface an extra byte stands between.
constexpr int kDrCaptureByte = 2;

// One function for each link_ function of entry/icescript.h, whose arguments and results it takes
// over; the LinkHandle that icehost gives to the plug-in points at a Probe.
// They may throw IoError, Interrupted, or Unsupported for what the probe cannot do.
class Probe {
 public:
  virtual ~Probe() = default;

  virtual int Config(int code, int value) = 0;
  virtual int Reset(int kind) = 0;
  virtual int Insert(int ir_bits, const std::uint8_t* ir, int dr_bits, const std::uint8_t* dr) = 0;
  virtual int Execute(std::uint8_t* capture) = 0;
  // Why the scan executed last may not have reached a TAP; empty if nothing speaks against it.
  virtual std::string Doubt() const { return ""; }
  // Whether Execute stores the captured IR.
  virtual bool CapturesIr() const { return true; }
  virtual int Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) = 0;
  // Cycles of TCK so far; unknown if the probe shows no pins.
  virtual std::optional<long> TckCycles() const { return std::nullopt; }
  // Ends a script: what is buffered goes out, and whoever takes it has answered since.
  virtual void Flush() = 0;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_PROBE_H_
