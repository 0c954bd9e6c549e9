// The simulated target, and the pins of the simulated probe.
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

// The instruction that selects an additional 32-bit register of the target. The target has no such
// register if the IDCODE or a register in the options uses this instruction.
constexpr std::uint64_t kScratchInstruction = 0x02;

struct TargetOptions {
  int ir_length = 5;  // in bits; instructions without a register select BYPASS
  std::uint64_t idcode_instruction = 0x01;
  std::uint32_t idcode = 0x1CE51001;  // its manufacturer code is not assigned
  // The reset values of the data registers that scripts may write and read, by instruction. A
  // register with the instruction of the IDCODE replaces the IDCODE.
  std::map<std::uint64_t, Bits> registers;
  bool has_scratch = true;
};

// A simulated TAP of IEEE 1149.1 with its registers.
class Target {
 public:
  explicit Target(const TargetOptions& options);

  // Perform an edge of TCK. On the rising edge, the TAP samples TMS and TDI. On the falling edge,
  // it changes TDO and updates its registers.
  void RaiseTck(bool tms, bool tdi);
  void LowerTck();
  // Moves the TAP to Test-Logic-Reset, as a low TRST does.
  void ResetTap();
  // If `hold` is true (NRST is low), the registers take their reset values, and keep them until a
  // call with false. The TAP controller keeps its state.
  void HoldRegisters(bool hold);

  int IrLength() const { return options_.ir_length; }
  // Returns the level of TDO; nothing if the TAP does not drive it (outside Shift-IR and Shift-DR).
  std::optional<bool> Tdo() const { return tdo_; }

 private:
  bool IsShifting() const { return state_ == TapState::kShiftDr || state_ == TapState::kShiftIr; }
  Bits CapturedDr() const;
  void UpdateDr();
  void Capture(Bits bits);
  // Returns the bits of the shift register. The first is the nearest to TDO.
  Bits Shifted() const;

  TargetOptions options_;
  std::map<std::uint64_t, Bits> registers_;
  bool held_ = false;
  TapState state_ = TapState::kTestLogicReset;
  std::uint64_t instruction_;
  Bits shift_;             // a ring, so that an edge replaces only one bit
  std::size_t first_ = 0;  // the index of the bit that leaves next
  std::optional<bool> tdo_;
};

class SimPort : public PinPort {
 public:
  // The target is at `place` in its chain. The other TAPs have only an IDCODE and BYPASS.
  explicit SimPort(const TargetOptions& options, const ChainPlace& place = {});

  void Write(int levels, int enables) override;
  int Read() override;
  void SampleTdo() override { samples_.push_back((Read() & GPIO_PIN_TDO) != 0); }
  Bits CollectTdo() override { return std::exchange(samples_, {}); }
  std::optional<int> IrLength() const override { return taps_[tap_].IrLength(); }

 private:
  void RaiseTck(bool tms, bool tdi);

  std::vector<Target> taps_;  // the first is the nearest to TDO
  std::size_t tap_;           // the index of the target
  int wires_ = GPIO_PIN_ALL;  // the levels on the wires, without the target's TDO
  int enables_ = 0;
  Bits samples_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_SIM_PORT_H_
