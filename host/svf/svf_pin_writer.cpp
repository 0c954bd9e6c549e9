#include <fmt/format.h>

#include <cstring>
#include <deque>
#include <optional>
#include <utility>

#include "host/events/call_fields.h"
#include "host/pins/recording_port.h"
#include "host/pins/tap_decoder.h"
#include "host/svf/svf_writer.h"
#include "host/target/wires.h"

namespace icehost {
namespace {

constexpr const char* kIdle = "IDLE";

constexpr const char* kTwoWire = "SVF has no 2-wire interface: a player scans over 5 wires";
constexpr const char* kReleased = "SVF cannot release pins: a player drives them";
constexpr const char* kEmptyScan =
    "SVF has no scan of 0 bits: a player skips its capture and update";
constexpr const char* kCutScan = "a scan was cut short: it is not in the file";
constexpr const char* kLongScan = "a scan has more than 1048576 bits: it is not in the file";
static_assert(kMostScanBits == 1048576);
constexpr const char* kPause = "a scan went through a Pause state, but a player's scan does not";
constexpr const char* kNoIdle =
    "scans followed each other without Run-Test/Idle between them, but a player enters this state";
constexpr const char* kResetFollows = "a reset follows without Run-Test/Idle";

bool IsShift(std::optional<TapState> state) {
  return state == TapState::kShiftDr || state == TapState::kShiftIr;
}

const char* Column(bool ir) {
  return ir ? "IR" : "DR";
}

std::string NamesOf(int pins) {
  std::string names;
  for (int pin = 0; pin < kPinCount; ++pin) {
    if ((pins >> pin & 1) == 0) continue;
    names.append(names.empty() ? "" : ", ").append(kPinNames[pin]);
  }
  return names;
}

class SvfPinWriter : public SvfWriter, public StepRecorder, private TapListener {
 public:
  using SvfWriter::SvfWriter;

  void BeginOperation(const std::string& name, const CallSource& source) override;
  void Record(const PinStep& step) override;
  void End(const PageHead& head) override;

  void OnRound(long round) override;
  void OnScript(const ScriptBegin& script) override { paths_.push_back(script.path); }
  void OnCall(const CallEvent& call) override;
  void OnScriptEnd(const ScriptEnd& end) override;

 private:
  struct Operation {
    long number;  // the first is 1
    CallSource source;
    const std::string* path;
  };
  // A comment on a step that has not been recorded yet.
  struct Note {
    std::size_t step;  // the comment comes before this step
    CallSource source;
    const std::string* path;
    const char* warning;
    std::string text;
  };
  // A scan that is not written yet, because its end state is known only when the TAP leaves Update.
  struct Held {
    SvfScan scan;
    Operation begin;
    int last_line;  // the scan's last line in a GPIO script, or 0
    bool paused;
  };

  void OnTapEdge(const PinStep& before, TapState to) override;
  void OnScan(const TapScan& scan) override;
  void OnTapReset(bool by_trst, StepRange steps) override;
  void OnIdle(long cycles, StepRange steps) override;
  void OnResetPins(int levels, StepRange steps) override;

  void Advance();
  void OnNewState(TapState from, TapState to);
  void Locate(const Operation& operation, int last_line);
  void BeginStatement();
  void LoseScan(const TapScan& scan);
  void WriteScan(const char* end);
  void AddNote(const CallEvent& call, const char* warning, std::string text);
  void Write(const Note& note);
  SvfScan ScanOf(const TapScan& scan) const;
  void OnInterface(const CallEvent& call);
  void OnPinCall(const CallEvent& call, const GpioCall& pins);
  void NoteTdoRead();

  TapDecoder decoder_{{this}};
  std::size_t step_ = 0;  // the number of the next step
  int reset_levels_ = GPIO_PIN_NRST | GPIO_PIN_TRST;
  std::deque<std::string> paths_;  // the paths of all scripts so far
  std::deque<Note> notes_;
  Operation current_{0, {}, nullptr};
  long located_ = 0;  // the operation whose place was written last
  int released_ = 0;  // the released pins, as GPIO_PIN_ bits
  bool two_wire_ = false;

  // Since the last Capture state:
  Operation begin_{0, {}, nullptr};
  bool paused_ = false;
  std::size_t shifted_ = 0;  // the number of bits shifted so far
  bool shifts_ = false;      // the last edge shifted a bit that the target drove
  Bits read_;                // for each bit, whether the script has read it
  std::optional<Held> held_;
  bool updated_ = false;        // a scan has ended, but Run-Test/Idle has not followed
  const char* end_dr_ = kIdle;  // the state of the last ENDDR
  const char* end_ir_ = kIdle;
};

void SvfPinWriter::BeginOperation(const std::string& /*name*/, const CallSource& source) {
  current_ = {current_.number + 1, source, &paths_.back()};
}

void SvfPinWriter::Record(const PinStep& step) {
  Advance();
  decoder_.Record(step);
  ++step_;
}

// Writes the notes that come before the next step.
void SvfPinWriter::Advance() {
  while (!notes_.empty() && notes_.front().step <= step_) {
    Write(notes_.front());
    notes_.pop_front();
  }
}

void SvfPinWriter::OnTapEdge(const PinStep& before, TapState to) {
  const bool shifts = IsShift(before.tap);
  // A level on TDO that the probe itself drives does not come from the target.
  shifts_ = shifts && !before.drives_tdo;
  if (shifts && before.drives_tdo && shifted_ < read_.size()) read_[shifted_] = false;
  if (shifts) ++shifted_;
  if (before.tap != to) OnNewState(*before.tap, to);
}

void SvfPinWriter::OnNewState(TapState from, TapState to) {
  switch (to) {
    case TapState::kRunTestIdle:
      updated_ = false;
      WriteScan(kIdle);
      if (from != TapState::kTestLogicReset) return;
      BeginStatement();
      return Statement("STATE IDLE");
    case TapState::kCaptureDr:
    case TapState::kCaptureIr:
      if (std::exchange(updated_, false)) {
        BeginStatement();
        Lose(kNoIdle, "the next scan follows without Run-Test/Idle");
      }
      begin_ = current_;
      paused_ = false;
      shifted_ = 0;
      read_.clear();
      return;
    case TapState::kPauseDr:
    case TapState::kPauseIr:
      paused_ = true;
      return;
    default:
      return;
  }
}

void SvfPinWriter::OnScan(const TapScan& scan) {
  const bool whole = scan.updated && !scan.continued;
  if (!whole || scan.in.empty() || scan.left_out > 0) return LoseScan(scan);
  const bool lines = begin_.source.section == nullptr && begin_.path == current_.path;
  const int last_line = lines ? current_.source.line : 0;
  held_ = {ScanOf(scan), begin_, last_line, paused_};
  updated_ = true;
}

void SvfPinWriter::LoseScan(const TapScan& scan) {
  BeginStatement();
  const std::string what =
      fmt::format("scan of {} {} bits: ", scan.in.size() + scan.left_out, Column(scan.ir));
  if (!scan.updated || scan.continued) {
    Lose(kCutScan, what + "cut short, left out");
  } else if (scan.in.empty()) {
    Lose(kEmptyScan, what + "left out");
  } else {
    Lose(kLongScan, what + "too long, left out");
  }
}

// If the bits for the other TAPs only keep them in BYPASS, returns the scan of the addressed TAP
// alone. Otherwise returns the whole scan. The mask is empty if no bit is compared.
SvfScan SvfPinWriter::ScanOf(const TapScan& scan) const {
  if (begin_.source.section == nullptr) {
    Bits mask = read_;
    if (!mask.empty()) mask.resize(scan.in.size());
    return {scan.ir, scan.in, scan.out, mask};
  }
  const TapColumn column = scan.ir ? TapColumn::kIr : TapColumn::kDr;
  const auto mask_of = [&](const Bits& bits) {
    return MaskOf(begin_.source, scan.ir, bits.size());
  };
  const std::size_t others = Place().Before(column) + Place().After(column);
  if (others > 0 && scan.in.size() > others) {
    const Bits own = Place().Own(column, scan.in);
    if (Place().Whole(column, own) == scan.in) {
      return {scan.ir, own, Place().Own(column, scan.out), mask_of(own), true};
    }
  }
  return {scan.ir, scan.in, scan.out, mask_of(scan.in)};
}

void SvfPinWriter::WriteScan(const char* end) {
  if (!held_.has_value()) return;
  const Held held = *std::exchange(held_, std::nullopt);
  Locate(held.begin, held.last_line);
  if (held.paused) Lose(kPause, fmt::format("scan through Pause-{}", Column(held.scan.ir)));
  const char*& end_in_force = held.scan.ir ? end_ir_ : end_dr_;
  if (std::strcmp(std::exchange(end_in_force, end), end) != 0) {
    Statement(fmt::format("END{} {}", Column(held.scan.ir), end));
  }
  ScanStatement(held.scan);
}

// Writes a comment with the place of an operation, unless this place was the last one written.
void SvfPinWriter::Locate(const Operation& operation, int last_line) {
  if (std::exchange(located_, operation.number) != operation.number) {
    CommentOnPlace(*operation.path, operation.source, last_line);
  }
}

// Begins a statement other than a scan, for the current operation.
void SvfPinWriter::BeginStatement() {
  WriteScan(kIdle);
  Locate(current_, 0);
}

void SvfPinWriter::OnTapReset(bool by_trst, StepRange /*steps*/) {
  const bool updated = std::exchange(updated_, false);
  if (by_trst) return;  // OnResetPins writes "TRST ON"
  // The script does not go through Run-Test/Idle, and OpenOCD 0.12 cannot play a scan that ends in
  // RESET. So the last scan ends in Pause, which has no effect of its own.
  const bool held = held_.has_value();
  if (held) WriteScan(held_->scan.ir ? "IRPAUSE" : "DRPAUSE");
  BeginStatement();
  if (updated && !held) Lose(kNoIdle, kResetFollows);
  Statement("STATE RESET");
}

void SvfPinWriter::OnIdle(long cycles, StepRange /*steps*/) {
  BeginStatement();
  Statement(fmt::format("RUNTEST IDLE {} TCK ENDSTATE IDLE", cycles));
}

void SvfPinWriter::OnResetPins(int levels, StepRange /*steps*/) {
  BeginStatement();
  const int changed = std::exchange(reset_levels_, levels) ^ levels;
  if ((changed & ~levels & GPIO_PIN_TRST) != 0 && updated_) Lose(kNoIdle, kResetFollows);
  if ((changed & GPIO_PIN_NRST) != 0) {
    Lose(kNoNrst, (levels & GPIO_PIN_NRST) != 0 ? "NRST high" : "NRST low");
  }
  if ((changed & GPIO_PIN_TRST) != 0) {
    Statement((levels & GPIO_PIN_TRST) != 0 ? "TRST OFF" : "TRST ON");
  }
}

void SvfPinWriter::OnCall(const CallEvent& call) {
  if (const auto* pins = call.As<GpioCall>()) OnPinCall(call, *pins);
  if (AsksForInterface(call)) OnInterface(call);
  CommentOnUnmet(call);
}

// Each scan asks for the interface, so only a change to two wires is noted.
void SvfPinWriter::OnInterface(const CallEvent& call) {
  const bool two_wire = call.result == CDI_ANSWER_2WIRE || call.result == CDI_ANSWER_CJTAG2;
  if (std::exchange(two_wire_, two_wire) == two_wire || !two_wire) return;
  AddNote(call, kTwoWire, "over the 2-wire interface");
}

void SvfPinWriter::OnPinCall(const CallEvent& call, const GpioCall& pins) {
  const int released = kDrivenPins & ~GPIO_PIN_NRST & ~pins.oe_mask;
  if ((pins.flags & (GPIO_FLAG_START | GPIO_FLAG_WRITE_OE)) != 0 &&
      std::exchange(released_, released) != released && released != 0) {
    AddNote(call, kReleased, NamesOf(released) + " released");
  }
  if (pins.data.has_value() && !decoder_.Last().drives_tdo) NoteTdoRead();
}

void SvfPinWriter::AddNote(const CallEvent& call, const char* warning, std::string text) {
  notes_.push_back({call.steps.begin, call.source, &paths_.back(), warning, std::move(text)});
}

// Notes that the script reads the bit that is on TDO now. A bit is on TDO between two falling edges
// of TCK, around the rising edge that shifts it. All earlier steps have been recorded.
void SvfPinWriter::NoteTdoRead() {
  const PinStep& now = decoder_.Last();
  const bool high = (now.wires & GPIO_PIN_TCK) != 0;
  if (high ? !shifts_ : !IsShift(now.tap)) return;
  const std::size_t bit = high ? shifted_ - 1 : shifted_;
  if (bit >= kMostScanBits) return;
  if (read_.size() <= bit) read_.resize(bit + 1);
  read_[bit] = true;
}

void SvfPinWriter::Write(const Note& note) {
  WriteScan(kIdle);
  CommentOnPlace(*note.path, note.source, 0);
  Lose(note.warning, note.text);
  located_ = 0;
}

void SvfPinWriter::OnRound(long round) {
  WriteScan(kIdle);
  SvfWriter::OnRound(round);
}

void SvfPinWriter::OnScriptEnd(const ScriptEnd& end) {
  Advance();
  if (end.ran) return;
  WriteScan(kIdle);
  Comment("The script failed.");
}

void SvfPinWriter::End(const PageHead& /*head*/) {
  decoder_.End();
  WriteScan(kIdle);
}

}  // namespace

std::unique_ptr<Output> MakeSvfPinWriter(std::ostream& stream) {
  return std::make_unique<SvfPinWriter>(stream);
}

}  // namespace icehost
