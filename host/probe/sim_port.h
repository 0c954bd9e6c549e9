// The pins of the simulated probe, and the simulated target.
#ifndef ICESCRIPT_HOST_PROBE_SIM_PORT_H_
#define ICESCRIPT_HOST_PROBE_SIM_PORT_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "entry/icescript.h"
#include "host/probe/pin_port.h"
#include "host/target/bits.h"
#include "host/target/chain_place.h"
#include "host/target/tap.h"

namespace icehost {

// The instruction of a register of 32 bits that the target has in addition to those of the options,
// unless one of them or the IDCODE has this instruction.
constexpr std::uint64_t kScratchInstruction = 0x02;

struct TargetOptions {
  // Instructions other than those below select BYPASS.
  int ir_length = 5;
  std::uint64_t idcode_instruction = 0x01;
  std::uint32_t idcode = 0x1CE51001;  // no manufacturer has this code
  // The reset values of data registers that a script may write and read, by instruction. A register
  // with the IDCODE's instruction replaces the IDCODE.
  std::map<std::uint64_t, Bits> registers;
  bool has_scratch = true;
};

// A TAP of IEEE 1149.1 with its registers.
class Target {
 public:
  explicit Target(const TargetOptions& options);

  // The two edges of TCK: the TAP samples TMS and TDI on the rising edge; it changes TDO and
  // updates its registers on the falling one.
  void RaiseTck(bool tms, bool tdi);
  void LowerTck();
  // TRST low.
  void ResetTap();
  // NRST low: the registers get their reset values and keep them; the TAP controller keeps its
  // state.
  void HoldRegisters(bool hold);

  int IrLength() const { return options_.ir_length; }
  // Returns the level of TDO; nothing outside Shift-IR and Shift-DR, where the target does not
  // drive it.
  std::optional<bool> Tdo() const { return tdo_; }

 private:
  bool IsShifting() const { return state_ == TapState::kShiftDr || state_ == TapState::kShiftIr; }
  Bits CapturedDr() const;
  void UpdateDr();
  void Capture(Bits bits);
  // The shift register, the bit next to TDO first.
  Bits Shifted() const;

  TargetOptions options_;
  std::map<std::uint64_t, Bits> registers_;
  bool held_ = false;
  TapState state_ = TapState::kTestLogicReset;
  std::uint64_t instruction_;
  // A ring, so that an edge moves no bits: the bit that leaves makes room for the one that comes.
  Bits shift_;
  std::size_t first_ = 0;  // the bit that leaves next
  std::optional<bool> tdo_;
};

class SimPort : public PinPort {
 public:
  // The target is at `place` in a chain of others, which have an IDCODE and BYPASS alone.
  explicit SimPort(const TargetOptions& options, const ChainPlace& place = {});

  void Write(int levels, int enables) override;
  int Read() override;
  void SampleTdo() override { samples_.push_back((Read() & GPIO_PIN_TDO) != 0); }
  Bits CollectTdo() override { return std::exchange(samples_, {}); }
  std::optional<int> IrLength() const override { return taps_[tap_].IrLength(); }

 private:
  void RaiseTck(bool tms, bool tdi);

  std::vector<Target> taps_;  // the first is the nearest to TDO
  std::size_t tap_;           // the target's
  int wires_ = GPIO_PIN_ALL;  // levels as the probe makes them; nothing is enabled at first
  int enables_ = 0;
  Bits samples_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_SIM_PORT_H_
