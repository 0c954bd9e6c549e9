#include "host/picture/svg_writer.h"

#include <fmt/format.h>

#include "host/events/call_fields.h"
#include "host/picture/svg_drawing.h"
#include "host/picture/svg_scale.h"

namespace icehost {
namespace {

SvgOperation::Kind KindOf(const CallEvent& call) {
  if (call.As<ExecuteCall>() != nullptr) return SvgOperation::Kind::kScan;
  return call.As<ResetCall>() != nullptr ? SvgOperation::Kind::kReset : SvgOperation::Kind::kPins;
}

std::string Unmet(const std::vector<Comparison>& comparisons) {
  std::string text;
  for (const Comparison& comparison : comparisons) {
    if (comparison.fault.empty()) continue;
    text +=
        fmt::format("{}{}expected {}, captured {} (mask {})", text.empty() ? "" : "; ",
                    RegisterOf(comparison.of), comparison.expected,
                    comparison.captured.empty() ? "unknown" : comparison.captured, comparison.mask);
  }
  return text;
}

}  // namespace

void SvgWriter::Record(const PinStep& step) {
  if (++run_.total_steps <= kMostSvgSteps) run_.steps.push_back(step);
}

void SvgWriter::OnScript(const std::string& path) {
  run_.scripts.push_back(path);
}

void SvgWriter::OnCall(const CallEvent& call) {
  // A call without a step may read the last one that is kept.
  if (call.steps.begin > kMostSvgSteps) return;
  KeepOperation(call);
  KeepRead(call);
}

void SvgWriter::End(const PageHead& /*head*/) {
  DrawSvg(run_, stream_);
}

SvgSource SvgWriter::SourceOf(const CallEvent& call) const {
  const std::string* const section = call.source.section;
  return {run_.scripts.size() - 1, call.source.line, section != nullptr ? *section : ""};
}

void SvgWriter::KeepOperation(const CallEvent& call) {
  if (call.steps.begin == call.steps.end) return;
  const SvgOperation::Kind kind = KindOf(call);
  SvgOperation operation = {kind, SourceOf(call), call.steps, {}, {}};
  if (kind == SvgOperation::Kind::kScan) {
    operation.sent = FieldsOf(InsertCall{call.As<ExecuteCall>()->scan}).arguments;
    operation.captured = FieldsOf(call.call).outputs;
  }
  run_.operations.push_back(std::move(operation));
}

// Many reads of one step are one, so that a loop that only reads needs no memory: the last, or the
// first that was not as expected.
void SvgWriter::KeepRead(const CallEvent& call) {
  std::string unmet = Unmet(call.comparisons);
  const auto* const gpio = call.As<GpioCall>();
  const bool pins = gpio != nullptr && gpio->data.has_value();
  if ((!pins && unmet.empty()) || call.steps.end == 0) return;
  const std::size_t step = call.steps.end - 1;
  long times = 1;
  if (!run_.reads.empty() && run_.reads.back().step == step) {
    times += run_.reads.back().times++;
    if (!run_.reads.back().unmet.empty()) return;
    run_.reads.pop_back();
  }
  run_.reads.push_back({SourceOf(call), step, pins ? fmt::format("0x{:02x}", *gpio->data) : "",
                        std::move(unmet), times});
}

}  // namespace icehost
