#include "host/record/svg_drawing.h"

#include <fmt/ostream.h>

#include <algorithm>

#include "host/record/svg_lanes.h"
#include "host/record/svg_marks.h"
#include "host/record/svg_scale.h"
#include "host/record/svg_style.h"
#include "host/system/xml_text.h"
#include "host/target/pin_names.h"

namespace icehost {
namespace {

// Pixels.
constexpr int kTop = 8;
constexpr int kRulerHeight = 16;
constexpr int kRowHeight = 22;
constexpr int kShapeHeight = 14;  // of a segment, and between the levels of a pin
constexpr int kBandGap = 16;
constexpr int kNoteHeight = 16;
constexpr int kLabelX = 6;
constexpr int kSlant = 2;      // of a segment's ends
constexpr int kBaseline = 11;  // of a row's text, from its top
constexpr int kMarkRadius = 3;

std::string NoteOf(const SvgRun& run, const SvgScale& scale) {
  if (run.total_steps == 0) return "No pin was driven";
  if (run.total_steps == scale.Steps()) return "";
  return fmt::format("The first {} of {} steps", scale.Steps(), run.total_steps);
}

bool HasReads(const SvgRun& run, const SvgScale& scale) {
  return !run.reads.empty() && run.reads.front().step < scale.Steps();
}

class Drawing {
 public:
  Drawing(const SvgRun& run, std::ostream& stream)
      : run_(run),
        scale_(run),
        lanes_(SvgLanes(run, scale_)),
        has_reads_(HasReads(run, scale_)),
        note_(NoteOf(run, scale_)),
        stream_(stream) {}

  void Draw();

 private:
  int Rows() const;
  int BandHeight() const { return kRulerHeight + Rows() * kRowHeight; }
  void DrawBand(std::size_t band, int top);
  void DrawNames(int y);
  void DrawRuler(std::size_t band, int y);
  void DrawLane(const SvgLane& lane, std::size_t band, int y);
  void DrawShape(const SvgSegment& segment, StepRange piece, std::size_t band, int y);
  void DrawSegmentText(const SvgSegment& segment, StepRange piece, std::size_t band, int y);
  void DrawPin(int pin, std::size_t band, int y);
  void DrawMarks(std::size_t band, int y);
  void DrawMark(const SvgMark& mark, int y);

  template <class... Values>
  void Put(const char* format, const Values&... values) {
    fmt::print(stream_, fmt::runtime(format), values...);
  }

  const SvgRun& run_;
  SvgScale scale_;
  std::vector<SvgLane> lanes_;
  bool has_reads_;
  std::string note_;
  std::ostream& stream_;
};

int Drawing::Rows() const {
  return static_cast<int>(lanes_.size()) + kPins + (has_reads_ ? 1 : 0);
}

void Drawing::Draw() {
  const int width = std::max(scale_.Width(), SvgTextWidth(note_) + 2 * kLabelX);
  const int band = BandHeight() + kBandGap;
  const int bands = static_cast<int>(scale_.Bands());
  const int height = kTop + bands * band + (note_.empty() ? 0 : kNoteHeight);
  Put("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0}\" height=\"{1}\" "
      "viewBox=\"0 0 {0} {1}\" role=\"img\" font-family=\"monospace\" font-size=\"10\">\n"
      "<title>Pins of the probe, one step is 1 us</title>\n{2}"
      "<rect {3} width=\"{0}\" height=\"{1}\"/>\n",
      width, height, kSvgDarkStyle, kSvgPage);
  for (int i = 0; i < bands; ++i) DrawBand(static_cast<std::size_t>(i), kTop + i * band);
  if (!note_.empty()) {
    Put("<text {} x=\"{}\" y=\"{}\" font-style=\"italic\">{}</text>\n", kSvgInk, kLabelX,
        height - 8, note_);
  }
  Put("</svg>\n");
}

void Drawing::DrawBand(std::size_t band, int top) {
  DrawRuler(band, top);
  int y = top + kRulerHeight;
  DrawNames(y);
  for (const SvgLane& lane : lanes_) {
    DrawLane(lane, band, y);
    y += kRowHeight;
  }
  Put("<g {}>\n", kSvgWave);
  for (int pin = 0; pin < kPins; ++pin) DrawPin(pin, band, y + pin * kRowHeight);
  Put("</g>\n");
  DrawMarks(band, y + kPins * kRowHeight);
}

void Drawing::DrawNames(int y) {
  Put("<g {} font-size=\"11\">\n<text x=\"{}\" y=\"{}\">us</text>\n", kSvgInk, kLabelX,
      y - kRulerHeight + kBaseline);
  const auto name = [&](const char* text) {
    Put("<text x=\"{}\" y=\"{}\">{}</text>\n", kLabelX, y + kBaseline, text);
    y += kRowHeight;
  };
  for (const SvgLane& lane : lanes_) name(lane.label);
  for (const char* const pin : kPinNames) name(pin);
  if (has_reads_) name("read");
  Put("</g>\n");
}

// A line through the band at each tick, under everything else, and its time above.
void Drawing::DrawRuler(std::size_t band, int y) {
  const StepRange steps = scale_.Band(band);
  Put("<path {} d=\"", kSvgGrid);
  for (std::size_t step = steps.begin; step <= steps.end; step += scale_.TickSteps()) {
    Put("M{}.5 {}V{}", scale_.X(band, step), y + kBaseline + 2, y + BandHeight());
  }
  Put("\"/>\n<g {} text-anchor=\"middle\">", kSvgInk);
  for (std::size_t step = steps.begin; step <= steps.end; step += scale_.TickSteps()) {
    Put("<text x=\"{}\" y=\"{}\">{}</text>", scale_.X(band, step), y + kBaseline - 1, step);
  }
  Put("</g>\n");
}

void Drawing::DrawLane(const SvgLane& lane, std::size_t band, int y) {
  const auto each_piece = [&](auto draw) {
    for (const SvgSegment& segment : lane.segments) {
      const StepRange piece = scale_.Piece(segment.steps, band);
      if (piece.begin < piece.end) (this->*draw)(segment, piece, band, y);
    }
  };
  Put("<g {}>\n", kSvgShape);
  each_piece(&Drawing::DrawShape);
  // Over the shapes, but the title under it is the shape's.
  Put("</g>\n<g {} text-anchor=\"middle\" pointer-events=\"none\">\n", kSvgInk);
  each_piece(&Drawing::DrawSegmentText);
  Put("</g>\n");
}

// Pointed where the segment begins and ends, upright where it is cut.
void Drawing::DrawShape(const SvgSegment& segment, StepRange piece, std::size_t band, int y) {
  const int left = scale_.X(band, piece.begin);
  const int right = scale_.X(band, piece.end);
  const int begin = left + (piece.begin == segment.steps.begin ? kSlant : 0);
  const int end = right - (piece.end == segment.steps.end ? kSlant : 0);
  Put("<path d=\"M{0} {4}H{2}L{3} {5}L{2} {6}H{0}L{1} {5}Z\"><title>{7}</title></path>\n", begin,
      left, end, right, y, y + kShapeHeight / 2, y + kShapeHeight, XmlText(segment.title));
}

void Drawing::DrawSegmentText(const SvgSegment& segment, StepRange piece, std::size_t band, int y) {
  const auto fits = [&](const std::string& text) {
    return scale_.Fits(text, piece.end - piece.begin);
  };
  std::vector<std::string> labels = {segment.name};
  if (scale_.WidestBand(segment.steps) == band) labels = segment.labels;
  const auto label = std::find_if(labels.begin(), labels.end(), fits);
  if (label == labels.end() || label->empty()) return;
  Put("<text x=\"{}\" y=\"{}\">{}</text>\n",
      (scale_.X(band, piece.begin) + scale_.X(band, piece.end)) / 2, y + kBaseline - 1,
      XmlText(*label));
}

void Drawing::DrawPin(int pin, std::size_t band, int y) {
  const auto level_y = [&](std::size_t step) {
    return (run_.steps[step].wires >> pin & 1) != 0 ? y : y + kShapeHeight;
  };
  const StepRange steps = scale_.Band(band);
  if (steps.begin == steps.end) return;
  std::size_t last = std::max<std::size_t>(steps.begin, 1) - 1;  // of the band before
  Put("<path d=\"M{} {}", scale_.X(band, steps.begin), level_y(last));
  for (std::size_t step = steps.begin; step < steps.end; last = step++) {
    if (level_y(step) != level_y(last)) Put("H{}V{}", scale_.X(band, step), level_y(step));
  }
  Put("H{}\"/>\n", scale_.X(band, steps.end));
}

void Drawing::DrawMarks(std::size_t band, int y) {
  for (const SvgMark& mark : SvgMarks(run_, scale_, band)) DrawMark(mark, y + kShapeHeight / 2);
}

// A dot, or a cross where it is not as expected.
void Drawing::DrawMark(const SvgMark& mark, int y) {
  const std::string title = XmlText(mark.title);
  if (mark.met) {
    Put("<circle {} cx=\"{}\" cy=\"{}\" r=\"{}\"><title>{}</title></circle>", kSvgRead, mark.x, y,
        kMarkRadius, title);
  } else {
    Put("<path {0} d=\"M{1} {2}L{3} {4}M{1} {4}L{3} {2}\"><title>{5}</title></path>", kSvgUnmet,
        mark.x - kMarkRadius, y - kMarkRadius, mark.x + kMarkRadius, y + kMarkRadius, title);
  }
  if (!mark.label.empty()) {
    Put("<text {} x=\"{}\" y=\"{}\">{}</text>", mark.met ? kSvgInk : kSvgUnmetInk, mark.label_x,
        y + kMarkRadius, XmlText(mark.label));
  }
  Put("\n");
}

}  // namespace

void DrawSvg(const SvgRun& run, std::ostream& stream) {
  Drawing(run, stream).Draw();
}

}  // namespace icehost
