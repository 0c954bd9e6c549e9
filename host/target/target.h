// The simulated target: a TAP of IEEE 1149.1 with its registers.
#ifndef ICESCRIPT_HOST_TARGET_TARGET_H_
#define ICESCRIPT_HOST_TARGET_TARGET_H_

#include <cstdint>
#include <map>
#include <optional>

#include "host/target/bits.h"
#include "host/target/tap.h"

namespace icehost {

// Of a register of 32 bits that is there beside those of the options, unless one of them, or the
// IDCODE, has its instruction.
constexpr std::uint64_t kScratchInstruction = 0x02;

struct TargetOptions {
  // Instructions other than those below select BYPASS.
  int ir_length = 5;
  std::uint64_t idcode_instruction = 0x01;
  std::uint32_t idcode = 0x1CE51001;  // no manufacturer has this code
  // Data registers that a script may write and read, by instruction: their reset values. One of the
  // IDCODE's instruction takes its place.
  std::map<std::uint64_t, Bits> registers;
};

class Target {
 public:
  explicit Target(const TargetOptions& options);

  // What the TAP does at the two edges of TCK: it samples TMS and TDI on the rising edge and
  // changes TDO, and updates its registers, on the falling one.
  void RaiseTck(bool tms, bool tdi);
  void LowerTck();
  // TRST low.
  void ResetTap();
  // NRST low: the registers get their reset values and keep them; the TAP controller stays where it
  // is.
  void HoldRegisters(bool hold);

  // Level of TDO; nothing while the target does not drive it, outside Shift-IR and Shift-DR.
  std::optional<bool> Tdo() const { return tdo_; }
  TapState State() const { return state_; }

 private:
  Bits CapturedDr() const;
  void UpdateDr();
  void Shift(bool tdi);

  TargetOptions options_;
  std::map<std::uint64_t, Bits> registers_;
  bool held_ = false;
  TapState state_ = TapState::kTestLogicReset;
  std::uint64_t instruction_;
  Bits shift_;
  std::optional<bool> tdo_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TARGET_TARGET_H_
