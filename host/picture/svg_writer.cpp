#include "host/picture/svg_writer.h"

#include <fmt/format.h>

#include <string_view>

#include "host/picture/svg_drawing.h"
#include "host/picture/svg_scale.h"

namespace icehost {
namespace {

SvgOperation::Kind KindOf(std::string_view function) {
  if (function == "link_jtag_execute") return SvgOperation::Kind::kScan;
  return function == "link_reset" ? SvgOperation::Kind::kReset : SvgOperation::Kind::kPins;
}

const char* RegisterOf(std::string_view output) {
  if (output == "ir_out") return "IR ";
  return output == "dr_out" ? "DR " : "";
}

std::string Unmet(const std::vector<Comparison>& comparisons) {
  std::string text;
  for (const Comparison& comparison : comparisons) {
    if (comparison.met) continue;
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
  if (call.function == std::string_view("link_jtag_insert")) sent_ = call.arguments;
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
  const SvgOperation::Kind kind = KindOf(call.function);
  SvgOperation operation = {kind, SourceOf(call), call.steps, {}, {}};
  if (kind == SvgOperation::Kind::kScan) {
    operation.sent = sent_;
    operation.captured = call.outputs;
  }
  run_.operations.push_back(std::move(operation));
}

// Many reads of one step are one, so that a loop that only reads needs no memory: the last, or the
// first that was not as expected.
void SvgWriter::KeepRead(const CallEvent& call) {
  std::string unmet = Unmet(call.comparisons);
  const bool pins = KindOf(call.function) == SvgOperation::Kind::kPins && !call.outputs.empty();
  if ((!pins && unmet.empty()) || call.steps.end == 0) return;
  const std::size_t step = call.steps.end - 1;
  long times = 1;
  if (!run_.reads.empty() && run_.reads.back().step == step) {
    times += run_.reads.back().times++;
    if (!run_.reads.back().unmet.empty()) return;
    run_.reads.pop_back();
  }
  run_.reads.push_back({SourceOf(call), step,
                        pins ? fmt::format("0x{:02x}", call.outputs.front().number) : "",
                        std::move(unmet), times});
}

}  // namespace icehost
