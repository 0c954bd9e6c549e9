#include "host/picture/svg_band.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/picture/svg_style.h"
#include "host/system/text.h"
#include "host/target/wires.h"

namespace icehost {
namespace {

// Pixels.
constexpr int kRulerHeight = 16;
constexpr int kRowHeight = 22;
constexpr int kShapeHeight = 14;  // of a segment, and between the levels of a pin
constexpr int kNameX = 6;
constexpr int kSlant = 2;      // of a segment's ends
constexpr int kBaseline = 11;  // of a row's text, from its top
constexpr int kMarkRadius = 3;

}  // namespace

SvgBand::SvgBand(const SvgRun& run, const SvgScale& scale, const std::vector<SvgLane>& lanes,
                 std::ostream& stream)
    : run_(run),
      scale_(scale),
      lanes_(lanes),
      stream_(stream),
      has_marks_(!run.reads.empty() && run.reads.front().step < scale.Steps()) {}

int SvgBand::Height() const {
  const int rows = static_cast<int>(lanes_.size()) + kPins + (has_marks_ ? 1 : 0);
  return kRulerHeight + rows * kRowHeight;
}

void SvgBand::Draw(std::size_t band, int top) {
  DrawRuler(band, top);
  int y = top + kRulerHeight;
  DrawNames(y);
  for (const SvgLane& lane : lanes_) {
    DrawLane(lane, band, y);
    y += kRowHeight;
  }
  stream_ << fmt::format("<g {}>\n", kSvgWave);
  for (int pin = 0; pin < kPins; ++pin) DrawPin(pin, band, y + pin * kRowHeight);
  stream_ << "</g>\n";
  const int marks_y = y + kPins * kRowHeight + kShapeHeight / 2;
  for (const SvgMark& mark : SvgMarks(run_, scale_, band)) DrawMark(mark, marks_y);
}

void SvgBand::DrawNames(int y) {
  stream_ << fmt::format("<g {} font-size=\"11\">\n<text x=\"{}\" y=\"{}\">us</text>\n", kSvgInk,
                         kNameX, y - kRulerHeight + kBaseline);
  const auto name = [&](const char* text) {
    stream_ << fmt::format("<text x=\"{}\" y=\"{}\">{}</text>\n", kNameX, y + kBaseline, text);
    y += kRowHeight;
  };
  for (const SvgLane& lane : lanes_) name(lane.label);
  for (const char* const pin : kPinNames) name(pin);
  if (has_marks_) name("read");
  stream_ << "</g>\n";
}

// A line through the band at each tick, under everything else, and its time above.
void SvgBand::DrawRuler(std::size_t band, int y) {
  const StepRange steps = scale_.Band(band);
  stream_ << fmt::format("<path {} d=\"", kSvgGrid);
  for (std::size_t step = steps.begin; step <= steps.end; step += scale_.TickSteps()) {
    stream_ << fmt::format("M{}.5 {}V{}", scale_.X(band, step), y + kBaseline + 2, y + Height());
  }
  stream_ << fmt::format("\"/>\n<g {} text-anchor=\"middle\">", kSvgInk);
  for (std::size_t step = steps.begin; step <= steps.end; step += scale_.TickSteps()) {
    stream_ << fmt::format("<text x=\"{}\" y=\"{}\">{}</text>", scale_.X(band, step),
                           y + kBaseline - 1, step);
  }
  stream_ << "</g>\n";
}

void SvgBand::DrawLane(const SvgLane& lane, std::size_t band, int y) {
  const auto each_piece = [&](auto draw) {
    for (const SvgSegment& segment : lane.segments) {
      const StepRange piece = scale_.Piece(segment.steps, band);
      if (piece.begin < piece.end) (this->*draw)(segment, piece, band, y);
    }
  };
  stream_ << fmt::format("<g {}>\n", kSvgShape);
  each_piece(&SvgBand::DrawShape);
  // Over the shapes, but the title under it is the shape's.
  stream_ << fmt::format("</g>\n<g {} text-anchor=\"middle\" pointer-events=\"none\">\n", kSvgInk);
  each_piece(&SvgBand::DrawSegmentText);
  stream_ << "</g>\n";
}

// Pointed where the segment begins and ends, upright where it is cut.
void SvgBand::DrawShape(const SvgSegment& segment, StepRange piece, std::size_t band, int y) {
  const int left = scale_.X(band, piece.begin);
  const int right = scale_.X(band, piece.end);
  const int begin = left + (piece.begin == segment.steps.begin ? kSlant : 0);
  const int end = right - (piece.end == segment.steps.end ? kSlant : 0);
  stream_ << fmt::format(
      "<path d=\"M{0} {4}H{2}L{3} {5}L{2} {6}H{0}L{1} {5}Z\"><title>{7}</title></path>\n", begin,
      left, end, right, y, y + kShapeHeight / 2, y + kShapeHeight, XmlText(segment.title));
}

void SvgBand::DrawSegmentText(const SvgSegment& segment, StepRange piece, std::size_t band, int y) {
  const auto fits = [&](const std::string& text) {
    return scale_.Fits(text, piece.end - piece.begin);
  };
  const bool widest = scale_.WidestBand(segment.steps) == band;
  const std::vector<std::string>& labels = widest ? segment.labels : segment.names;
  const auto label = std::find_if(labels.begin(), labels.end(), fits);
  if (label == labels.end()) return;
  stream_ << fmt::format("<text x=\"{}\" y=\"{}\">{}</text>\n",
                         (scale_.X(band, piece.begin) + scale_.X(band, piece.end)) / 2,
                         y + kBaseline - 1, XmlText(*label));
}

void SvgBand::DrawPin(int pin, std::size_t band, int y) {
  const auto level_y = [&](std::size_t step) {
    return (run_.steps[step].wires >> pin & 1) != 0 ? y : y + kShapeHeight;
  };
  const StepRange steps = scale_.Band(band);
  if (steps.begin == steps.end) return;
  std::size_t last = std::max<std::size_t>(steps.begin, 1) - 1;  // of the band before
  stream_ << fmt::format("<path d=\"M{} {}", scale_.X(band, steps.begin), level_y(last));
  for (std::size_t step = steps.begin; step < steps.end; last = step++) {
    if (level_y(step) == level_y(last)) continue;
    stream_ << fmt::format("H{}V{}", scale_.X(band, step), level_y(step));
  }
  stream_ << fmt::format("H{}\"/>\n", scale_.X(band, steps.end));
}

// A dot, or a cross where it is not as expected.
void SvgBand::DrawMark(const SvgMark& mark, int y) {
  const std::string title = XmlText(mark.title);
  if (mark.met) {
    stream_ << fmt::format("<circle {} cx=\"{}\" cy=\"{}\" r=\"{}\"><title>{}</title></circle>",
                           kSvgRead, mark.x, y, kMarkRadius, title);
  } else {
    stream_ << fmt::format(
        "<path {0} d=\"M{1} {2}L{3} {4}M{1} {4}L{3} {2}\"><title>{5}</title></path>", kSvgUnmet,
        mark.x - kMarkRadius, y - kMarkRadius, mark.x + kMarkRadius, y + kMarkRadius, title);
  }
  if (!mark.label.empty()) {
    stream_ << fmt::format("<text {} x=\"{}\" y=\"{}\">{}</text>",
                           mark.met ? kSvgInk : kSvgUnmetInk, mark.label_x, y + kMarkRadius,
                           XmlText(mark.label));
  }
  stream_ << '\n';
}

}  // namespace icehost
