// Converts an SVF file into a GPIO script with a line for each TCK edge.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/svf/form.h"
#include "host/system/interrupt.h"

namespace icehost {
namespace {

constexpr long kMostPasses = 1000000000;  // the limit for one REPT block
constexpr double kMostCycles = 1e18;      // the limit for two nested blocks
constexpr std::size_t kBlockSize = std::string_view("REPT=2\nENDR\n").size();
// The relative error that rounding may cause when a time or a rate is converted to TCK cycles.
constexpr double kRounding = 1e-15;
// The approximate number of bits between the comments that count the bits of a long scan.
constexpr std::size_t kBitsPerMark = 64;

constexpr char kGpioHead[] = R"(# Imported by icehost from {}.
# START and the lines after it reset the target and its TAP, which the file does not do. A comment
# gives the line of each statement in the file.
[ORVEX_ICE_GPIO]
START
GPIO_OE=0x1F
NRST=1,TMS=1
TRST=1
REPT=5
TCK=0
TCK=1
ENDR
)";

// The level that TDO must have, or nothing if TDO is not compared.
using Expected = std::optional<bool>;

// Rounds a product up to a number of TCK cycles, but ignores an excess that is only rounding.
double RoundedUp(double product) {
  return std::ceil(product * (1 - kRounding));
}

class GpioForm : public SvfForm {
 public:
  GpioForm(Problems& problems, std::ostream* script, std::optional<double> tck_hz)
      : SvfForm(problems, script), tck_hz_(tck_hz) {}

  void Begin(const std::string& name) override;
  void Scan(bool ir, const SvfShift& shift) override;
  void EndState(bool ir, TapState state) override { (ir ? ir_end_ : dr_end_) = state; }
  void State(const std::vector<TapState>& path) override;
  void RunTest(const SvfRunTest& run) override;
  void Trst(SvfTrst mode) override;
  void Frequency(std::optional<double> hz) override;
  void Pio() override { Refuse("a GPIO script can drive only NRST and the JTAG pins"); }
  void End() override;

 private:
  void WriteLine(const std::string& more = "");
  void Repeat(const std::string& first, const std::string& again, long times);
  void Clock(bool tms, bool tdi, Expected tdo, long times);
  void Clock(bool tms);
  void Reset();
  void MoveTo(TapState state);
  void NoteReset(TapState state);
  void Follow(const std::vector<TapState>& path);
  void Shift(const SvfShift& shift);
  std::optional<long> CyclesOf(const SvfRunTest& run);
  void NoteFrequency();

  std::optional<double> tck_hz_;
  std::optional<double> file_hz_;  // the rate of the last FREQUENCY
  Place hz_at_{};
  bool hz_used_ = false;  // a wait has used file_hz_
  TapState ir_end_ = TapState::kRunTestIdle;
  TapState dr_end_ = TapState::kRunTestIdle;
  // The state that the script has reached:
  TapState tap_ = TapState::kTestLogicReset;
  bool tms_ = true;
  bool tdi_ = false;
  bool trst_low_ = false;
};

void GpioForm::Begin(const std::string& name) {
  Write(fmt::format(kGpioHead, SvfNameInComment(name)));
}

void GpioForm::WriteLine(const std::string& more) {
  Write(fmt::format("# line {}: {}{}\n", At().line, Keyword(), more));
}

// Writes the lines for `times` TCK cycles. `again` is `first` without the levels of TMS and TDI.
void GpioForm::Repeat(const std::string& first, const std::string& again, long times) {
  const bool is_long = times > kMostPasses;
  if (is_long) {
    Write(fmt::format("REPT={}\nREPT={}\n{}ENDR\nENDR\n", times / kMostPasses, kMostPasses, first));
    times %= kMostPasses;
  }
  const std::string& next = is_long ? again : first;
  if (times > 2 || (times == 2 && again.size() > kBlockSize)) {
    return Write(fmt::format("REPT={}\n{}ENDR\n", times, next));
  }
  if (times > 0) Write(next);
  if (times == 2) Write(again);
}

// Sets TMS and TDI and reads TDO while TCK is low, because the target reads TMS and TDI on the
// rising edge and changes TDO on the falling edge.
void GpioForm::Clock(bool tms, bool tdi, Expected tdo, long times) {
  std::string low = "TCK=0";
  if (std::exchange(tms_, tms) != tms) low += tms ? ",TMS=1" : ",TMS=0";
  if (std::exchange(tdi_, tdi) != tdi) low += tdi ? ",TDI=1" : ",TDI=0";
  std::string high = "\n";
  if (tdo.has_value()) high += fmt::format("PRINT=GPIO_IN # expect TDO={:d}\n", *tdo);
  high += "TCK=1\n";
  Repeat(low + high, "TCK=0" + high, times);
  tap_ = NextTapState(tap_, tms);
}

// SVF does not define which bits a STATE statement shifts on its path. The script shifts zeros.
void GpioForm::Clock(bool tms) {
  const bool shifts = tap_ == TapState::kShiftDr || tap_ == TapState::kShiftIr;
  Clock(tms, tdi_ && !shifts, std::nullopt, 1);
}

void GpioForm::Reset() {
  Clock(true, tdi_, std::nullopt, kTapResetEdges);
  tap_ = TapState::kTestLogicReset;
}

void GpioForm::MoveTo(TapState state) {
  while (tap_ != state && !trst_low_) Clock(TmsTowards(tap_, state));
}

void GpioForm::Follow(const std::vector<TapState>& path) {
  for (std::size_t i = 0; i < path.size(); ++i) {
    const TapState state = path[i];
    const bool tms = NextTapState(tap_, true) == state;
    if (state == TapState::kTestLogicReset) {
      Reset();
    } else if (tms || NextTapState(tap_, false) == state) {
      Clock(tms);
    } else {
      problems_.Error(AtWord(i), fmt::format("no TCK edge leads directly from {} to {}",
                                             SvfStateName(tap_), SvfStateName(state)));
      tap_ = path.back();
      return;
    }
  }
}

// Adds a note if the file asks for a state that the TAP cannot reach while TRST is on.
void GpioForm::NoteReset(TapState state) {
  if (state == TapState::kTestLogicReset) return;
  problems_.Note(At(), "TRST is on: the TAP stays in Test-Logic-Reset");
}

void GpioForm::State(const std::vector<TapState>& path) {
  WriteLine();
  const TapState last = path.back();
  if (trst_low_) return NoteReset(last);
  if (path.size() > 1 || last == TapState::kTestLogicReset) return Follow(path);
  // A path from a Pause state to itself goes through Update and Capture.
  if (last != tap_) return MoveTo(last);
  Clock(last != TapState::kRunTestIdle);
  if (last == TapState::kRunTestIdle) return;
  Clock(true);
  MoveTo(last);
}

void GpioForm::Scan(bool ir, const SvfShift& shift) {
  WriteLine();
  if (trst_low_) return Refuse("TRST is on and keeps the TAP in Test-Logic-Reset");
  MoveTo(ir ? TapState::kShiftIr : TapState::kShiftDr);
  Shift(shift);
  MoveTo(ir ? ir_end_ : dr_end_);
}

void GpioForm::Shift(const SvfShift& shift) {
  const std::size_t last = shift.tdi.size() - 1;
  const auto expected = [&](std::size_t bit) {
    return shift.mask[bit] ? Expected(shift.tdo[bit]) : std::nullopt;
  };
  std::size_t mark = kBitsPerMark;
  for (std::size_t bit = 0; bit < last;) {
    ThrowIfInterrupted();
    const bool tdi = shift.tdi[bit];
    const Expected tdo = expected(bit);
    if (tdo.has_value() && bit >= mark) {
      Write(fmt::format("# bit {}\n", bit));
      mark = bit + kBitsPerMark;
    }
    const std::size_t first = bit;
    while (bit < last && shift.tdi[bit] == tdi && expected(bit) == tdo) ++bit;
    Clock(false, tdi, tdo, static_cast<long>(bit - first));
  }
  Clock(true, shift.tdi[last], expected(last), 1);
}

// Returns the number of TCK cycles for a wait. If the wait is impossible, reports why and returns
// nothing. FREQUENCY limits the rate of the file's cycles, so a faster probe needs more cycles.
std::optional<long> GpioForm::CyclesOf(const SvfRunTest& run) {
  const auto hz = tck_hz_.has_value() ? tck_hz_ : file_hz_;
  hz_used_ = true;
  double cycles = std::ceil(run.cycles);
  if (file_hz_.has_value() && *hz > *file_hz_) cycles = RoundedUp(run.cycles / *file_hz_ * *hz);
  if (run.seconds > 0) {
    if (!hz.has_value()) {
      Refuse("a wait in seconds needs a TCK rate: put FREQUENCY before it, or use --tck-hz N");
      return std::nullopt;
    }
    cycles = std::max(cycles, RoundedUp(run.seconds * *hz));
  }
  if (cycles > kMostCycles) {
    Refuse(fmt::format("a script can wait for at most {} TCK cycles", kMostCycles));
    return std::nullopt;
  }
  if (run.most_seconds.has_value() && hz.has_value() && cycles > *run.most_seconds * *hz + 1) {
    Refuse(fmt::format("at {} Hz, {} TCK cycles take longer than the maximum", *hz, cycles));
    return std::nullopt;
  }
  return static_cast<long>(cycles);
}

void GpioForm::RunTest(const SvfRunTest& run) {
  const auto cycles = CyclesOf(run);
  if (!cycles.has_value()) {
    if (!trst_low_) tap_ = run.end;
    return;
  }
  const auto hz = tck_hz_.has_value() ? tck_hz_ : file_hz_;
  const bool timed = run.seconds > 0 || file_hz_.has_value();
  WriteLine(timed ? fmt::format(", long enough for TCK of up to {} Hz", *hz) : "");
  if (trst_low_) NoteReset(run.state == TapState::kTestLogicReset ? run.end : run.state);
  MoveTo(run.state);
  const bool tms = tap_ == TapState::kTestLogicReset;
  if (*cycles > 0) Clock(tms, tdi_, std::nullopt, *cycles);
  MoveTo(run.end);
}

// TMS should be high while TRST changes (IEEE 1149.1).
void GpioForm::Trst(SvfTrst mode) {
  if (mode == SvfTrst::kAbsent) return;
  if (mode == SvfTrst::kZ) {
    problems_.Note(At(), "the script drives TRST high, because not every probe can release it");
  }
  WriteLine();
  tms_ = true;
  trst_low_ = mode == SvfTrst::kOn;
  if (trst_low_) tap_ = TapState::kTestLogicReset;
  Write(trst_low_ ? "TRST=0,TMS=1\n" : "TRST=1,TMS=1\n");
}

void GpioForm::Frequency(std::optional<double> hz) {
  NoteFrequency();
  file_hz_ = hz;
  hz_at_ = At();
  hz_used_ = false;
}

// Adds a note about how the script treats the last FREQUENCY.
void GpioForm::NoteFrequency() {
  if (!file_hz_.has_value()) return;
  if (!hz_used_) {
    problems_.Note(hz_at_, "left out: no wait follows, and the probe sets its own TCK rate");
  } else if (!tck_hz_.has_value()) {
    problems_.Note(
        hz_at_,
        "waits are long enough only up to this TCK rate: for a faster probe, use --tck-hz N");
  }
}

void GpioForm::End() {
  NoteFrequency();
  Write("TCK=0,END\n");
}

}  // namespace

std::unique_ptr<SvfForm> MakeGpioForm(Problems& problems, std::ostream* script,
                                      std::optional<double> tck_hz) {
  return std::make_unique<GpioForm>(problems, script, tck_hz);
}

}  // namespace icehost
