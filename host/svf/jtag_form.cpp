// Converts an SVF file into a JTAG script with a section for each pair of IR scan and DR scan.
#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/text.h"
#include "entry/icescript.h"
#include "host/check/plan.h"
#include "host/svf/form.h"
#include "host/system/text.h"

namespace icehost {
namespace {

constexpr std::size_t kMostBits = std::size_t{8} * JTAG_DR_MAX_BYTES;
static_assert(JTAG_IR_MAX_BYTES == JTAG_DR_MAX_BYTES);

// A JTAG script cannot wait. Waits up to these limits may be left out, because a probe takes that
// long between two scans anyway.
constexpr double kMostIdleCycles = 16;
constexpr double kMostIdleSeconds = 1e-5;

constexpr const char* kWait =
    "a JTAG script cannot wait, and the waits between these scans are too long to leave out (more "
    "than 16 TCK cycles or 10 us)";

constexpr const char* kEndState = "in a JTAG script, every scan begins and ends in Run-Test/Idle";

constexpr char kJtagHead[] =
    R"(# Imported by icehost from {}.
# Each section is named after the line of its scan in that file.

)";

class JtagForm : public SvfForm {
 public:
  using SvfForm::SvfForm;

  void Begin(const std::string& name) override;
  void Scan(bool ir, const SvfShift& shift) override;
  void EndState(bool ir, TapState state) override;
  void State(const std::vector<TapState>& path) override;
  void RunTest(const SvfRunTest& run) override;
  void Trst(SvfTrst mode) override;
  void Frequency(std::optional<double> hz) override;
  void Pio() override { Refuse("a JTAG script can drive only the pins of the TAP"); }
  void End() override;

 private:
  struct IrScan {
    int line;
    SvfShift shift;
  };

  void ReportGap();
  bool CanScan(const SvfShift& shift);
  void ScanDr(const SvfShift& shift);
  void EndScan(TapState end);
  void WriteIr();
  void EndWithoutScan();
  // Writes a section. An empty `ir` or `dr` means that this register is not scanned.
  void Section(int line, const SvfShift& ir, const SvfShift& dr);
  void Expect(const char* value_key, const char* mask_key, const SvfShift& shift);
  void Idle(double cycles, double seconds);
  void Reset();
  void Comment(const std::string& text) { Write(fmt::format("# {}\n", text)); }
  void LeaveOut(const char* why);

  int last_line_ = 0;             // the line of the last section
  long on_line_ = 0;              // the number of sections for that line so far
  std::optional<IrScan> new_ir_;  // an IR scan that is not in a section yet
  bool has_ir_ = false;           // a section has loaded the current instruction
  bool scanned_ = false;
  bool resets_ = false;  // the file resets the TAP before its first scan
  bool trst_on_ = false;
  std::optional<double> hz_;
  TapState ir_end_ = TapState::kRunTestIdle;
  TapState dr_end_ = TapState::kRunTestIdle;
  // Since the last scan:
  double idle_cycles_ = 0;
  double idle_seconds_ = 0;
  std::optional<Place> wait_;   // the statement that made the wait too long
  std::optional<Place> reset_;  // the statement that reset the TAP
  std::optional<Place> pause_;  // the last scan, if the TAP has been in Pause since then

  std::optional<Place> bare_;  // the first DR scan for which no instruction was loaded
};

void JtagForm::Begin(const std::string& name) {
  Write(fmt::format(kJtagHead, SvfNameInComment(name)));
}

void JtagForm::Scan(bool ir, const SvfShift& shift) {
  if (ir) WriteIr();
  ReportGap();
  scanned_ = true;
  if (!CanScan(shift)) return;
  EndScan(ir ? ir_end_ : dr_end_);
  if (!ir) return ScanDr(shift);
  if (shift.Compares() && shift.tdi.size() > kMostCapturedIrBits) {
    return Refuse(fmt::format("a JTAG script can compare a captured IR of at most {} bits",
                              kMostCapturedIrBits));
  }
  new_ir_ = {At().line, shift};
}

// Reports events since the last scan if a JTAG script cannot express them.
void JtagForm::ReportGap() {
  const auto report = [this](std::optional<Place>& place, const char* why) {
    if (place.has_value()) problems_.Error(*place, why);
    place.reset();
  };
  if (wait_.has_value() && !scanned_) {
    problems_.Note(*wait_, "left out: this wait comes before the first scan");
    wait_.reset();
  }
  report(wait_, kWait);
  report(reset_, "a JTAG script cannot reset the TAP between scans: split the file here");
  report(pause_, kEndState);
  idle_cycles_ = idle_seconds_ = 0;
}

// Returns whether a script can contain the scan. If not, reports why.
bool JtagForm::CanScan(const SvfShift& shift) {
  if (trst_on_) {
    Refuse("TRST is on and keeps the TAP in Test-Logic-Reset");
  } else if (shift.tdi.size() > kMostBits) {
    Refuse(fmt::format(
        "a register in a JTAG script can have at most {} bits, including headers and trailers",
        kMostBits));
  } else {
    return true;
  }
  return false;
}

void JtagForm::ScanDr(const SvfShift& shift) {
  const int line = At().line;
  if (new_ir_.has_value()) {
    Section(line, std::exchange(new_ir_, std::nullopt)->shift, shift);
    has_ir_ = true;
    return;
  }
  if (!has_ir_ && !bare_.has_value()) bare_ = At();
  Section(line, {}, shift);
}

// Writes the last instruction if no DR scan followed it.
void JtagForm::WriteIr() {
  if (!new_ir_.has_value()) return;
  Comment("no DR scan: only the instruction is loaded");
  Section(new_ir_->line, new_ir_->shift, {});
  new_ir_.reset();
}

void JtagForm::EndState(bool ir, TapState state) {
  const TapState other_pause = ir ? TapState::kPauseDr : TapState::kPauseIr;
  if (state == other_pause) return Refuse(kEndState);
  (ir ? ir_end_ : dr_end_) = state;
  LeaveOut("every scan of a script ends in Run-Test/Idle");
}

// A scan that ends in Pause is an error only if the TAP does not go on to Run-Test/Idle.
void JtagForm::EndScan(TapState end) {
  if (end == TapState::kTestLogicReset) {
    reset_ = At();
  } else if (end != TapState::kRunTestIdle) {
    pause_ = At();
  }
}

void JtagForm::State(const std::vector<TapState>& path) {
  Idle(static_cast<double>(path.size()), 0);
  bool resets = false;
  for (std::size_t i = 0; i < path.size(); ++i) {
    const bool reset = path[i] == TapState::kTestLogicReset;
    resets = resets || reset;
    if (reset || path[i] == TapState::kRunTestIdle) continue;
    return problems_.Error(
        AtWord(i), fmt::format("a JTAG script cannot move the TAP to {}", SvfStateName(path[i])));
  }
  if (resets) return Reset();
  LeaveOut("every scan of a script ends in Run-Test/Idle");
}

void JtagForm::RunTest(const SvfRunTest& run) {
  const auto is_either = [&](TapState state) { return run.state == state || run.end == state; };
  if (is_either(TapState::kPauseDr) || is_either(TapState::kPauseIr)) {
    return Refuse("a JTAG script cannot stay in a Pause state");
  }
  const bool in_reset = trst_on_ || run.state == TapState::kTestLogicReset;
  if (in_reset && run.cycles > kMostIdleCycles) {
    problems_.Note(At(), "left out: TCK cycles in Test-Logic-Reset have no effect");
  }
  Idle(in_reset ? 0 : run.cycles, run.seconds);
  if (is_either(TapState::kTestLogicReset)) return Reset();
  LeaveOut("a JTAG script cannot wait");
}

void JtagForm::Trst(SvfTrst mode) {
  if (mode != SvfTrst::kAbsent) trst_on_ = mode == SvfTrst::kOn;
  if (mode == SvfTrst::kOn) return Reset();
  LeaveOut("the probe keeps TRST off");
}

void JtagForm::Frequency(std::optional<double> hz) {
  hz_ = hz;
  if (hz.has_value()) problems_.Note(At(), "left out: the probe sets its own TCK rate");
  LeaveOut("the probe sets its own TCK rate");
}

// Called when the TAP goes to Run-Test/Idle or is reset. Adds to the time since the last scan.
void JtagForm::Idle(double cycles, double seconds) {
  pause_.reset();
  idle_cycles_ += cycles;
  // If FREQUENCY limits the TCK rate, the cycles take a minimum time, too.
  idle_seconds_ += std::max(seconds, hz_.has_value() ? cycles / *hz_ : 0);
  const bool is_long = idle_cycles_ > kMostIdleCycles || idle_seconds_ > kMostIdleSeconds;
  if (is_long && !wait_.has_value()) wait_ = At();
}

void JtagForm::Reset() {
  WriteIr();
  if (scanned_ && !reset_.has_value()) reset_ = At();
  if (!scanned_ && !std::exchange(resets_, true)) Comment("reset TAP");
  LeaveOut(scanned_ ? "no scan follows" : "icehost resets the TAP before the first scan");
}

void JtagForm::LeaveOut(const char* why) {
  Comment(fmt::format("line {}: {} left out: {}", At().line, Keyword(), why));
}

void JtagForm::End() {
  WriteIr();
  // In Pause, the register is not updated yet, and a reset by TRST does not update it.
  if (pause_.has_value()) problems_.Error(*pause_, kEndState);
  if (problems_.HasErrors()) return;
  if (!scanned_) EndWithoutScan();
  if (bare_.has_value()) {
    problems_.Warn(*bare_,
                   "no SIR precedes this scan, so its register depends on what ran before the "
                   "script; icehost resets the TAP first, but a debug server might not");
  }
  if (wait_.has_value()) {
    problems_.Note(
        *wait_,
        "left out: no scan follows, so an operation that the last scan started gets no TCK cycles");
  }
  if (reset_.has_value()) {
    problems_.Warn(*reset_,
                   "left out: a JTAG script cannot reset the TAP after its scans, so the last "
                   "instruction stays loaded");
  }
}

// If the file only resets the TAP, a section that shifts nothing is enough.
void JtagForm::EndWithoutScan() {
  if (resets_) return Section(At().line, {}, {});
  problems_.Error({1, 1}, "the file contains no scan (SIR or SDR)");
}

void JtagForm::Section(int line, const SvfShift& ir, const SvfShift& dr) {
  on_line_ = line == last_line_ ? on_line_ + 1 : 1;
  last_line_ = line;
  if (ir.tdi.empty()) Comment("no IR scan: the previous instruction stays loaded");
  Write(fmt::format("[LINE_{}{}]\nIR={},{}\nDR={},{},{}\n", line,
                    on_line_ > 1 ? fmt::format("_{}", on_line_) : "", ir.tdi.size(),
                    ByteList(ir.tdi), dr.Compares() ? 'R' : 'W', dr.tdi.size(), ByteList(dr.tdi)));
  Expect("IR_TDO", "IR_MASK", ir);
  Expect("TDO", "MASK", dr);
  Write("\n");
}

void JtagForm::Expect(const char* value_key, const char* mask_key, const SvfShift& shift) {
  if (!shift.Compares()) return;
  Write(fmt::format("{}={}\n", value_key, ByteList(shift.tdo)));
  if (std::find(shift.mask.begin(), shift.mask.end(), false) == shift.mask.end()) return;
  Write(fmt::format("{}={}\n", mask_key, ByteList(shift.mask)));
}

}  // namespace

std::unique_ptr<SvfForm> MakeJtagForm(Problems& problems, std::ostream* script) {
  return std::make_unique<JtagForm>(problems, script);
}

}  // namespace icehost
