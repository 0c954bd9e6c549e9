// A probe made of pins.
#ifndef ICESCRIPT_HOST_PROBE_PIN_PROBE_H_
#define ICESCRIPT_HOST_PROBE_PIN_PROBE_H_

#include <string>

#include "entry/icescript.h"
#include "host/probe/pin_port.h"
#include "host/probe/probe.h"
#include "host/probe/tap_walker.h"
#include "host/target/bits.h"

namespace icehost {

class PinProbe : public Probe {
 public:
  // `port` must outlive the probe. `wire_mode` is the CDI_ANSWER_ in force at the start; where
  // `two_wire` is false, selecting the 2-wire interface throws Unsupported.
  PinProbe(PinPort& port, int wire_mode, bool two_wire)
      : port_(port), two_wire_(two_wire), wire_mode_(wire_mode), walker_(port) {}

  int Config(int code, int value) override;
  int Reset(int kind) override;
  int Insert(int ir_bits, const std::uint8_t* ir, int dr_bits, const std::uint8_t* dr) override;
  int Execute(std::uint8_t* capture) override;
  int Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) override;
  std::string Doubt() const override { return doubt_; }
  void Flush() override { port_.Flush(); }

  std::optional<long> TckCycles() const override { return walker_.TckCycles(); }

 private:
  Bits ScanBits(int bits, const std::uint8_t* data) const;

  PinPort& port_;
  bool two_wire_;
  std::string doubt_;
  int wire_mode_;
  Bits ir_;
  Bits dr_;
  TapWalker walker_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_PIN_PROBE_H_
