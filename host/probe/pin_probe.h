// A probe that performs scans by moving its pins.
#ifndef ICESCRIPT_HOST_PROBE_PIN_PROBE_H_
#define ICESCRIPT_HOST_PROBE_PIN_PROBE_H_

#include <optional>
#include <string>
#include <utility>

#include "entry/icescript.h"
#include "host/probe/pin_port.h"
#include "host/probe/probe.h"
#include "host/target/bits.h"
#include "host/target/chain_place.h"
#include "host/target/tap.h"

namespace icehost {

// Moves the TAPs on the pins by TCK and TMS. Throws the exceptions of the port.
class TapWalker {
 public:
  // `port` must outlive the walker.
  explicit TapWalker(PinPort& port) : port_(port) {}

  // Writes the pins, as PinPort::Write does, and follows the state of the TAP.
  void Write(int levels, int enables);
  // Return the levels and enables that were written last. At first, nothing is enabled.
  int Levels() const { return levels_; }
  int Enables() const { return enables_; }

  // Sets TRST and NRST high, and moves the TAP to Run-Test/Idle. Resets the TAP first if its state
  // is unknown.
  void TakeTap();
  // Makes the next TakeTap reset the TAP.
  void ForgetTap() { tap_.Forget(); }
  // Sets NRST low, and then high. TRST stays high, and TCK low.
  void PulseNrst();
  // Moves the TAP to Test-Logic-Reset from any state, by TMS alone. TRST and NRST stay high.
  void ResetTap();
  // Moves the TAP from a known state to `shift` (Shift-DR or Shift-IR), shifts `in`, moves the TAP
  // to Run-Test/Idle, and leaves TCK low. CollectTdo of the port then returns TDO for each bit.
  void Scan(TapState shift, const Bits& in);

  long TckCycles() const { return tap_.TckCycles(); }

 private:
  void ClockTck(bool tms, bool tdi, bool sample);
  void MoveTo(TapState state);

  PinPort& port_;
  int levels_ = GPIO_PIN_ALL;
  int enables_ = 0;
  TapTracker tap_;
  bool pulsed_nrst_ = false;  // since the last TakeTap
};

class PinProbe : public Probe {
 public:
  // `port` must outlive the probe. `wire_mode` is the CDI_ANSWER_ value at the start. If `two_wire`
  // is false, selecting the 2-wire interface throws Unsupported. Scripts address the TAP at
  // `place`.
  PinProbe(PinPort& port, int wire_mode, bool two_wire, ChainPlace place = {})
      : port_(port),
        two_wire_(two_wire),
        wire_mode_(wire_mode),
        walker_(port),
        place_(std::move(place)) {}

  void SetPlace(ChainPlace place) { place_ = std::move(place); }
  PinPort& Port() { return port_; }

  int Config(int code, int value) override;
  int Reset(int kind) override;
  int Insert(int ir_bits, const std::uint8_t* ir, int dr_bits, const std::uint8_t* dr) override;
  int Execute(std::uint8_t* capture) override;
  std::string Doubt() const override { return doubt_; }
  int Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) override;
  void Flush() override { port_.Flush(); }
  bool ResetTapBeforeScan() override;
  const ChainScan* WholeChain() const override;
  int ReportedPins() const override { return port_.ReportedPins(); }
  std::optional<long> TckCycles() const override { return walker_.TckCycles(); }

 private:
  Bits ScanBits(int bits, const std::uint8_t* data) const;
  void RefuseUnfitScan() const;
  std::string DoubtOf(const Bits& captured_ir) const;

  PinPort& port_;
  bool two_wire_;
  int wire_mode_;
  Bits ir_;
  Bits dr_;
  std::string doubt_;
  TapWalker walker_;
  ChainPlace place_;
  ChainScan chain_;                // of the last scan
  bool others_in_bypass_ = false;  // an IR scan has put the others in BYPASS since the last reset
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_PIN_PROBE_H_
