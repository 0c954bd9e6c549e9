// Collects the contents of the picture during a run.
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "host/events/call_fields.h"
#include "host/events/events.h"
#include "host/events/output.h"
#include "host/picture/svg_drawing.h"
#include "host/pins/recording_port.h"
#include "host/target/bits.h"

namespace icehost {
namespace {

// Indexed by TapState. DR and IR scans share names, but an IR scan begins with two "Sel".
constexpr const char* kShortTapNames[kTapStates] = {
    "TLR", "RTI", "Sel", "Cap", "Sh",  "Ex1", "Pau", "Ex2",
    "Upd", "Sel", "Cap", "Sh",  "Ex1", "Pau", "Ex2", "Upd",
};

SvgSegment TapSegment(std::size_t step, std::optional<TapState> state) {
  if (!state.has_value()) return {{step, step + 1}, "unknown", {"unknown", "?"}};
  const std::string name = TapStateName(*state);
  return {{step, step + 1}, name, {name, kShortTapNames[static_cast<int>(*state)]}};
}

// Returns the beginning of a title, such as "examples/reset.ini:5 [CONTROL]: ".
std::string PlaceOf(const std::string& script, const CallSource& source) {
  std::string place = script;
  if (source.line > 0) place += fmt::format(":{}", source.line);
  if (source.section != nullptr) place += fmt::format(" [{}]", *source.section);
  return place + ": ";
}

// Returns a long description of a scan, followed by a short description.
std::vector<std::string> ScanTexts(const Scan& scan) {
  const auto captured = [](const ScanRegister& one) {
    const std::string bytes = one.out.value_or("");
    return bytes.empty() ? std::string() : " -> " + ByteText(bytes);
  };
  const std::string ir = ByteText(scan.ir.in);
  const std::string dr_out = captured(scan.dr);
  return {fmt::format("IR {} bits {}{}, DR {} bits {}{}", scan.ir.bits, ir, captured(scan.ir),
                      scan.dr.bits, ByteText(scan.dr.in), dr_out),
          fmt::format("IR {}, DR{}", ir, dr_out)};
}

SvgSegment OperationOf(const CallEvent& call, const std::string& script) {
  const auto* const scan = call.As<ExecuteCall>();
  const bool reset = call.As<ResetCall>() != nullptr;
  const int line = call.source.line;
  if (scan == nullptr && !reset && line > 0) return {call.steps, script, {}, line, line};
  std::vector<std::string> texts = {"pins"};
  if (reset) texts = {"reset", "RST"};
  if (scan != nullptr) texts = ScanTexts(*scan->scan);
  SvgSegment operation = {call.steps, PlaceOf(script, call.source) + texts.front(), {}};
  if (call.source.section != nullptr) {
    const std::string name = fmt::format("[{}]", *call.source.section);
    for (const std::string& text : texts) operation.labels.push_back(name + ' ' + text);
    operation.labels.push_back(name);
  }
  operation.labels.insert(operation.labels.end(), texts.begin(), texts.end());
  return operation;
}

// Returns "IR expected 0x01, captured 0x00 (mask 0x01); DR ...", or "" if all is as expected.
std::string Unmet(const std::vector<Comparison>& comparisons) {
  std::string text;
  for (const Comparison& comparison : comparisons) {
    if (comparison.fault.empty()) continue;
    text += fmt::format("{}{}expected {}, captured {} (mask {})", text.empty() ? "" : "; ",
                        RegisterOf(comparison.of), comparison.expected, comparison.captured,
                        comparison.mask);
  }
  return text;
}

// Returns the pins that a call read, or the values that a scan captured if they are unexpected.
std::optional<SvgRead> ReadOf(const CallEvent& call, const std::string& script) {
  const std::string unmet = Unmet(call.comparisons);
  const auto* const gpio = call.As<GpioCall>();
  const bool pins = gpio != nullptr && gpio->data.has_value();
  if ((!pins && unmet.empty()) || call.steps.end == 0) return std::nullopt;
  SvgRead read = {call.steps.end - 1, unmet.empty(), PlaceOf(script, call.source), {}, 1};
  const std::string value = pins ? fmt::format("0x{:02x}", *gpio->data) : "";
  read.title += read.met ? "read " + value : unmet;
  const std::string first = unmet.substr(0, unmet.find(';'));
  if (!read.met) read.labels = {unmet, first, first.substr(0, first.find(','))};
  if (pins) read.labels.push_back(value);
  return read;
}

// Keeps the steps of a run that fit in the picture, and the calls in these steps.
class SvgWriter : public Output, public StepRecorder, public EventListener {
 public:
  explicit SvgWriter(std::ostream& stream) : stream_(stream) {}
  void Record(const PinStep& step) override;

  void OnRound(long round) override { round_ = fmt::format(", round {}", round); }
  void OnScript(const ScriptBegin& script) override;
  void OnCall(const CallEvent& call) override;
  void End(const PageHead& head) override;

 private:
  void KeepOperation(SvgSegment operation);
  void KeepRead(SvgRead read);

  std::ostream& stream_;
  SvgRun run_;
  std::string round_;   // appended to script names in a repeated run
  std::string script_;  // the path of the current script
  bool script_begins_ = false;
};

void SvgWriter::Record(const PinStep& step) {
  const std::size_t number = run_.total_steps++;
  if (number >= kMostSvgSteps) return;
  if (number == 0 || step.tap != run_.steps.back().tap) {
    run_.tap_states.push_back(TapSegment(number, step.tap));
  }
  run_.tap_states.back().steps.end = number + 1;
  run_.steps.push_back(step);
}

void SvgWriter::OnScript(const ScriptBegin& script) {
  script_ = script.path;
  script_begins_ = true;
}

void SvgWriter::OnCall(const CallEvent& call) {
  // A call without steps that begins at this limit may have read the pins in the last step kept.
  if (call.steps.begin > kMostSvgSteps) return;
  if (call.steps.begin < std::min(call.steps.end, kMostSvgSteps))
    KeepOperation(OperationOf(call, script_));
  if (std::optional<SvgRead> read = ReadOf(call, script_)) KeepRead(std::move(*read));
}

void SvgWriter::End(const PageHead& /*head*/) {
  DrawSvg(run_, stream_);
}

void SvgWriter::KeepOperation(SvgSegment operation) {
  if (script_begins_) {
    const std::string name = script_.substr(script_.rfind('/') + 1);
    run_.scripts.push_back({operation.steps, script_ + round_, {script_ + round_, name + round_}});
  }
  script_begins_ = false;
  run_.scripts.back().steps.end = operation.steps.end;
  run_.operations.push_back(std::move(operation));
}

// Keeps only one read for each step, so that a loop of reads needs no extra memory. This is the
// first read that is not as expected or, if all are as expected, the last read.
void SvgWriter::KeepRead(SvgRead read) {
  std::vector<SvgRead>& reads = run_.reads;
  if (!reads.empty() && reads.back().step == read.step) {
    read.times += reads.back().times++;
    if (!reads.back().met) return;
    reads.pop_back();
  }
  reads.push_back(std::move(read));
}

}  // namespace

std::unique_ptr<Output> MakeSvg(std::ostream& stream) {
  return std::make_unique<SvgWriter>(stream);
}

}  // namespace icehost
