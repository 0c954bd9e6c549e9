#include "host/svf/svf_pin_writer.h"

#include <fmt/format.h>

#include <cstring>
#include <utility>

#include "host/svf/svf_call_writer.h"
#include "host/target/wires.h"

namespace icehost {
namespace {

constexpr const char* kIdle = "IDLE";

bool IsShift(std::optional<TapState> state) {
  return state == TapState::kShiftDr || state == TapState::kShiftIr;
}

const char* Column(bool ir) {
  return ir ? "IR" : "DR";
}

// Of the pins that SVF drives.
std::string NamesOf(int pins) {
  std::string names;
  for (int pin = 0; pin < kPins; ++pin) {
    if ((pins >> pin & 1) == 0) continue;
    names.append(names.empty() ? "" : ", ").append(kPinNames[pin]);
  }
  return names;
}

}  // namespace

void SvfPinWriter::BeginOperation(const std::string& /*name*/, const CallSource& source) {
  current_ = {current_.number + 1, source, &paths_.back()};
}

void SvfPinWriter::Record(const PinStep& step) {
  Advance();
  decoder_.Record(step);
  const PinStep before = std::exchange(last_, step);
  if ((~before.wires & step.wires & GPIO_PIN_TCK) != 0) OnEdge(before, step);
  ++step_;
}

// Past what stands before the next step.
void SvfPinWriter::Advance() {
  while (!notes_.empty() && notes_.front().step <= step_) {
    Write(notes_.front());
    notes_.pop_front();
  }
}

void SvfPinWriter::OnEdge(const PinStep& before, const PinStep& step) {
  const std::optional<TapState> from = before.tap;
  const bool shifts = IsShift(from);
  // A level of the script's own is nothing that came back.
  shifts_ = shifts && !before.drives_tdo;
  if (shifts && before.drives_tdo && shifted_ < read_.size()) read_[shifted_] = false;
  if (shifts) ++shifted_;
  if (from.has_value() && step.tap.has_value() && from != step.tap) OnNewState(*from, *step.tap);
}

void SvfPinWriter::OnNewState(TapState from, TapState to) {
  switch (to) {
    case TapState::kRunTestIdle:
      updated_ = false;
      WriteScan(kIdle);
      if (from != TapState::kTestLogicReset) return;
      BeginStatement();
      return file_.Statement("STATE IDLE");
    case TapState::kCaptureDr:
    case TapState::kCaptureIr:
      if (std::exchange(updated_, false)) {
        BeginStatement();
        file_.Lose(SvfLoss::kNoIdle, "from the scan above to the next without Run-Test/Idle");
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
  if (!scan.updated || scan.in.empty() || scan.left_out > 0) return LoseScan(scan);
  const bool lines = begin_.source.section == nullptr && begin_.path == current_.path;
  const int last_line = lines ? current_.source.line : 0;
  held_ = {{scan.ir, scan.in, scan.out, MaskOf(scan)}, begin_, last_line, paused_};
  updated_ = true;
}

void SvfPinWriter::LoseScan(const TapScan& scan) {
  BeginStatement();
  const std::string what =
      fmt::format("scan of {} {} bits: ", scan.in.size() + scan.left_out, Column(scan.ir));
  if (!scan.updated) {
    file_.Lose(SvfLoss::kCutScan, what + "cut short, left out");
  } else if (scan.in.empty()) {
    file_.Lose(SvfLoss::kEmptyScan, what + "left out");
  } else {
    file_.Lose(SvfLoss::kLongScan, what + "too long, left out");
  }
}

// The bits that count; none where none do.
Bits SvfPinWriter::MaskOf(const TapScan& scan) const {
  if (begin_.source.section != nullptr) return SvfMask(begin_.source, scan.ir, scan.in.size());
  Bits mask = read_;
  if (!mask.empty()) mask.resize(scan.in.size());
  return mask;
}

void SvfPinWriter::WriteScan(const char* end) {
  if (!held_.has_value()) return;
  const Held held = *std::exchange(held_, std::nullopt);
  Locate(held.begin, held.last_line);
  if (held.paused)
    file_.Lose(SvfLoss::kPause, fmt::format("by way of Pause-{}", Column(held.scan.ir)));
  const char*& end_in_force = held.scan.ir ? end_ir_ : end_dr_;
  if (std::strcmp(std::exchange(end_in_force, end), end) != 0) {
    file_.Statement(fmt::format("END{} {}", Column(held.scan.ir), end));
  }
  file_.Scan(held.scan);
}

// A comment on the place, where the last one was on another.
void SvfPinWriter::Locate(const Operation& operation, int last_line) {
  if (std::exchange(located_, operation.number) != operation.number) {
    file_.Place(*operation.path, operation.source, last_line);
  }
}

// What follows is of the operation under way, and no part of a scan.
void SvfPinWriter::BeginStatement() {
  WriteScan(kIdle);
  Locate(current_, 0);
}

void SvfPinWriter::OnTapReset(bool by_trst, StepRange /*steps*/) {
  const bool updated = std::exchange(updated_, false);
  if (by_trst) return;  // which says so itself
  // By way of Pause, which changes nothing, since the script does not go through Run-Test/Idle. A
  // scan that itself ends in RESET is too much for OpenOCD 0.12.
  const bool held = held_.has_value();
  if (held) WriteScan(held_->scan.ir ? "IRPAUSE" : "DRPAUSE");
  BeginStatement();
  if (updated && !held) {
    file_.Lose(SvfLoss::kNoIdle, "from the scan above to the reset without Run-Test/Idle");
  }
  file_.Statement("STATE RESET");
}

void SvfPinWriter::OnIdle(long cycles, StepRange /*steps*/) {
  BeginStatement();
  file_.Statement(fmt::format("RUNTEST IDLE {} TCK ENDSTATE IDLE", cycles));
}

void SvfPinWriter::OnResetPins(int levels, StepRange /*steps*/) {
  BeginStatement();
  const int changed = std::exchange(reset_levels_, levels) ^ levels;
  if ((changed & GPIO_PIN_NRST) != 0) {
    file_.Lose(SvfLoss::kResetLine, (levels & GPIO_PIN_NRST) != 0 ? "NRST high" : "NRST low");
  }
  if ((changed & GPIO_PIN_TRST) != 0) {
    file_.Statement((levels & GPIO_PIN_TRST) != 0 ? "TRST OFF" : "TRST ON");
  }
}

void SvfPinWriter::OnCall(const CallEvent& call) {
  if (std::strcmp(call.function, "link_gpio_operator") == 0) OnPinCall(call);
  if (std::strcmp(call.function, "link_config") == 0) OnConfig(call);
  CommentOnUnmet(call, file_);
}

// Each scan asks which interface it goes over.
void SvfPinWriter::OnConfig(const CallEvent& call) {
  if (call.arguments[0].number != LINK_CONFIG_GET_CDI) return;
  const bool two_wire = call.result == CDI_ANSWER_2WIRE || call.result == CDI_ANSWER_CJTAG2;
  if (std::exchange(two_wire_, two_wire) == two_wire || !two_wire) return;
  AddNote(call, SvfLoss::kTwoWire, "over the 2-wire interface");
}

void SvfPinWriter::OnPinCall(const CallEvent& call) {
  const int enables = call.arguments[1].number;
  const int flags = call.arguments[2].number;
  const int released = kDrivenPins & ~GPIO_PIN_NRST & ~enables;
  if ((flags & (GPIO_FLAG_START | GPIO_FLAG_WRITE_OE)) != 0 &&
      std::exchange(released_, released) != released && released != 0) {
    AddNote(call, SvfLoss::kReleased, NamesOf(released) + " released");
  }
  if (!call.outputs.empty() && (enables & GPIO_PIN_TDO) == 0) NoteTdoRead();
}

void SvfPinWriter::AddNote(const CallEvent& call, SvfLoss loss, std::string text) {
  notes_.push_back({call.steps.begin, call.source, &paths_.back(), loss, std::move(text)});
  Advance();
}

// The bit that is on TDO now: from the falling edge of TCK before the one that shifts it to the one
// behind. Everything up to the read has been recorded.
void SvfPinWriter::NoteTdoRead() {
  const bool high = (last_.wires & GPIO_PIN_TCK) != 0;
  if (high ? !shifts_ : !IsShift(last_.tap)) return;
  const std::size_t bit = high ? shifted_ - 1 : shifted_;
  if (bit >= kMostScanBits) return;
  if (read_.size() <= bit) read_.resize(bit + 1);
  read_[bit] = true;
}

void SvfPinWriter::Write(const Note& note) {
  WriteScan(kIdle);
  file_.Place(*note.path, note.source, 0);
  file_.Lose(note.loss, note.text);
  located_ = 0;
}

void SvfPinWriter::OnScriptEnd(bool ran) {
  if (ran) return;
  WriteScan(kIdle);
  file_.Comment("The script failed.");
}

void SvfPinWriter::End(const PageHead& /*head*/) {
  decoder_.End();
  Advance();
  WriteScan(kIdle);
}

}  // namespace icehost
