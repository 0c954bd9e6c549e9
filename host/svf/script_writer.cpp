#include "host/svf/script_writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "host/check/plan.h"
#include "host/system/text.h"

namespace icehost {
namespace {

constexpr std::size_t kLongestName = 200;

// A file name for a comment, in which "expect" would begin an expectation.
std::string NameInComment(std::string name) {
  if (name.size() > kLongestName) name = "..." + name.substr(name.size() - kLongestName);
  name = Printable(name);
  for (std::size_t at = 0; at < name.size(); ++at) {
    if (icescript::EqualsUpper(std::string_view(name).substr(at, 6), "EXPECT")) name[at] = '?';
  }
  return name;
}

}  // namespace

void ScriptWriter::Ir(Place place, const SvfShift& shift) {
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

void ScriptWriter::Dr(Place place, const SvfShift& shift) {
  if (!BeginScan(place, shift)) return;
  if (instruction_reset_) {
    problems_.Error(place,
                    "a script cannot scan the register that a TAP reset selects: load its "
                    "instruction with SIR first");
  } else if (new_ir_.has_value()) {
    ir_ = std::exchange(new_ir_, std::nullopt);
    Section(place.line, ir_->shift, shift);
  } else if (ir_.has_value()) {
    loads_again_ = true;
    Comment(fmt::format("the instruction of line {} again", ir_->line));
    Section(place.line, {ir_->shift.tdi, {}, {}}, shift);
  } else {
    if (!bare_.has_value()) bare_ = place;
    Comment("no IR scan: the instruction is the one before, or that of a TAP reset");
    Section(place.line, {}, shift);
  }
}

bool ScriptWriter::BeginScan(Place place, const SvfShift& shift) {
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

// Writes an instruction that no DR scan follows.
void ScriptWriter::WriteIr() {
  if (!new_ir_.has_value()) return;
  ir_ = std::exchange(new_ir_, std::nullopt);
  Comment("no DR scan: the instruction alone");
  Section(ir_->line, ir_->shift, {});
}

void ScriptWriter::Reset(Place place) {
  WriteIr();
  ir_.reset();
  instruction_reset_ = true;
  if (scanned_ && !reset_.has_value()) reset_ = place;
}

void ScriptWriter::End() {
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

void ScriptWriter::Comment(const std::string& text) {
  text_ += fmt::format("# {}\n", text);
}

void ScriptWriter::Section(int line, const SvfShift& ir, const SvfShift& dr) {
  on_line_ = line == last_line_ ? on_line_ + 1 : 1;
  last_line_ = line;
  text_ +=
      fmt::format("[LINE_{}{}]\nIR={},{}\nDR={},{},{}\n", line,
                  on_line_ > 1 ? fmt::format("_{}", on_line_) : "", ir.tdi.size(), ByteList(ir.tdi),
                  dr.Compares() ? 'R' : 'W', dr.tdi.size(), ByteList(dr.tdi));
  Expect("IR_TDO", "IR_MASK", ir);
  Expect("TDO", "MASK", dr);
  text_ += '\n';
}

void ScriptWriter::Expect(const char* value_key, const char* mask_key, const SvfShift& shift) {
  if (!shift.Compares()) return;
  text_ += fmt::format("{}={}\n", value_key, ByteList(shift.tdo));
  if (std::find(shift.mask.begin(), shift.mask.end(), false) == shift.mask.end()) return;
  text_ += fmt::format("{}={}\n", mask_key, ByteList(shift.mask));
}

std::string ScriptWriter::Script(const std::string& name) const {
  return fmt::format(
      "# Imported by icehost from {}. A section is named after the line of its\n"
      "# scan there.\n{}\n{}",
      NameInComment(name),
      loads_again_ ? "# A section is an IR scan and then a DR scan: where a DR is scanned again, "
                     "the section loads\n# the same instruction again.\n"
                   : "",
      text_);
}

}  // namespace icehost
