#include "host/svf/scan_sequence.h"

#include <fmt/format.h>

#include <utility>

#include "host/check/plan.h"

namespace icehost {

void ScanSequence::Ir(Place place, const SvfShift& shift) {
  WriteIr();
  instruction_reset_ = false;
  if (!BeginScan(place, shift)) return;
  if (shift.Compares() && shift.tdi.size() > kMostCapturedIrBits) {
    problems_.Error(place, fmt::format("a script compares a captured IR of up to {} bits, this one "
                                       "has {}: leave its TDO out",
                                       kMostCapturedIrBits, shift.tdi.size()));
    return;
  }
  new_ir_ = {place.line, shift};
}

void ScanSequence::Dr(Place place, const SvfShift& shift) {
  if (!BeginScan(place, shift)) return;
  if (instruction_reset_) {
    problems_.Error(place,
                    "a script cannot scan the register that a TAP reset selects: load its "
                    "instruction with SIR first");
  } else if (new_ir_.has_value()) {
    ir_ = std::exchange(new_ir_, std::nullopt);
    script_.Section(place.line, ir_->shift, shift);
  } else if (ir_.has_value()) {
    loads_again_ = true;
    script_.Comment(fmt::format("the instruction of line {} again", ir_->line));
    script_.Section(place.line, SvfShift{ir_->shift.tdi, {}, {}}, shift);
  } else {
    if (!bare_.has_value()) bare_ = place;
    script_.Comment("no IR scan: the instruction is the one before, or that of a TAP reset");
    script_.Section(place.line, std::nullopt, shift);
  }
}

bool ScanSequence::BeginScan(Place place, const SvfShift& shift) {
  if (shift.tdi.size() > kMostSvfBits) {
    problems_.Error(place, fmt::format("with header and trailer this has {} bits: a script's "
                                       "register has at most {}",
                                       shift.tdi.size(), kMostSvfBits));
    return false;
  }
  if (trst_) {
    problems_.Error(place, "TRST is on, and a script cannot hold it during a scan");
    return false;
  }
  if (const auto reset = std::exchange(reset_, std::nullopt); reset.has_value()) {
    problems_.Error(*reset, "a script cannot reset the TAP between scans: split the file here");
  }
  scanned_ = true;
  return true;
}

// An instruction without a DR scan of its own.
void ScanSequence::WriteIr() {
  if (!new_ir_.has_value()) return;
  ir_ = std::exchange(new_ir_, std::nullopt);
  script_.Comment("no DR scan: the instruction alone");
  script_.Section(ir_->line, ir_->shift, std::nullopt);
}

void ScanSequence::Reset(Place place) {
  WriteIr();
  ir_.reset();
  instruction_reset_ = true;
  if (scanned_ && !reset_.has_value()) reset_ = place;
}

void ScanSequence::End() {
  WriteIr();
  if (bare_.has_value() && !problems_.HasErrors()) {
    problems_.Warn(*bare_,
                   "no SIR before: this scans what the instruction before the file selects, and "
                   "icehost resets the TAP first");
  }
  if (!reset_.has_value()) return;
  problems_.Warn(*reset_,
                 "left out: a script cannot reset the TAP behind its scans; the last instruction "
                 "stays");
}

}  // namespace icehost
