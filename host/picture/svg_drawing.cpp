#include "host/picture/svg_drawing.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "host/system/text.h"
#include "host/target/wires.h"

namespace icehost {
namespace {

constexpr std::size_t kMostBands = 25;

// The following constants are in pixels.
constexpr int kNamesWidth = 56;
constexpr int kRightMargin = 28;  // room for the value that is read in the last step
constexpr int kTextMargin = 3;
constexpr int kReach = 6;  // distance from the middle of a mark to any label
constexpr int kTop = 8;
constexpr int kBandGap = 16;
constexpr int kRulerHeight = 16;
constexpr int kRowHeight = 22;
constexpr int kShapeHeight = 14;  // height of a segment, and distance between the levels of a pin
constexpr int kNoteHeight = 16;
constexpr int kNameX = 6;
constexpr int kSlant = 2;      // width of the pointed end of a segment
constexpr int kBaseline = 11;  // distance from the top of a row to the baseline of its text
constexpr int kMarkRadius = 3;

constexpr char kPage[] = R"(class="page" fill="#ffffff")";
constexpr char kInk[] = R"(class="ink" fill="#1f2328")";
constexpr char kGrid[] = R"(class="grid" fill="none" stroke="#d0d7de" stroke-width="1")";
constexpr char kWave[] = R"(class="wave" fill="none" stroke="#0a58ca" stroke-width="1.5")";
constexpr char kShape[] = R"(class="shape" fill="#eef2f7" stroke="#8c959f" stroke-width="0.7")";
constexpr char kRead[] = R"(class="read" fill="#0a58ca")";
constexpr char kUnmet[] = R"(class="unmet" fill="none" stroke="#cf222e" stroke-width="2.5")";
constexpr char kUnmetInk[] = R"(class="unmet-ink" fill="#cf222e")";

constexpr char kDarkStyle[] = R"(<style>
@media (prefers-color-scheme:dark){
.page{fill:#0d1117}.ink{fill:#e6edf3}.grid{stroke:#30363d}.wave{stroke:#6cb6ff}
.shape{fill:#1c2430;stroke:#6e7681}.read{fill:#6cb6ff}
.unmet{stroke:#ff7b72}.unmet-ink{fill:#ff7b72}}
</style>
)";

// A TAP state in a scan has at least two steps, which have room for three characters. A step of a
// GPIO script has room for its line number and, if there are few steps, for the value it reads.
struct StepSize {
  int width;
  std::size_t in_band;
  std::size_t tick;
};
constexpr StepSize kScanSteps = {11, 80, 10};
constexpr StepSize kPinSteps = {22, 40, 5};
constexpr StepSize kFewPinSteps = {44, 20, 5};
static_assert(kMostSvgSteps == kMostBands * kScanSteps.in_band);

bool HasOnlyLines(const SvgRun& run) {
  return !run.operations.empty() &&
         std::all_of(run.operations.begin(), run.operations.end(),
                     [](const SvgSegment& operation) { return operation.lowest_line > 0; });
}

const StepSize& SizeFor(const SvgRun& run) {
  if (!HasOnlyLines(run)) return kScanSteps;
  return run.steps.size() > kFewPinSteps.in_band ? kPinSteps : kFewPinSteps;
}

std::size_t RoundUp(std::size_t number, std::size_t multiple) {
  return (number + multiple - 1) / multiple * multiple;
}

// At font size 10, an ASCII character is 6.02 pixels wide. Other characters may be twice as wide.
int TextWidth(const std::string& text) {
  long hundredths = 0;
  for (const char ch : text) {
    if ((ch & 0x80) == 0) hundredths += 602;
    if ((ch & 0xC0) == 0xC0) hundredths += 1204;
  }
  return static_cast<int>((hundredths + 99) / 100);
}

// Divides the steps into bands of equal width, one below the other. Positions are in pixels.
class Scale {
 public:
  // All bands are about equally full, and all bands except the last end at a tick.
  explicit Scale(const SvgRun& run)
      : size_(SizeFor(run)),
        steps_(std::min(run.steps.size(), kMostBands * size_.in_band)),
        band_steps_(steps_) {
    if (steps_ <= size_.in_band) return;
    const std::size_t fewest = RoundUp(steps_, size_.in_band) / size_.in_band;
    band_steps_ = RoundUp((steps_ + fewest - 1) / fewest, size_.tick);
    bands_ = RoundUp(steps_, band_steps_) / band_steps_;
  }

  std::size_t Steps() const { return steps_; }          // the number of steps that are drawn
  std::size_t TickSteps() const { return size_.tick; }  // steps from one tick to the next
  std::size_t Bands() const { return bands_; }          // always at least one
  int Width() const { return X(0, band_steps_) + kRightMargin; }

  StepRange Band(std::size_t band) const {
    return {band * band_steps_, std::min((band + 1) * band_steps_, steps_)};
  }
  // Returns the position of the left end of a step in this band.
  int X(std::size_t band, std::size_t step) const {
    return kNamesWidth + static_cast<int>(step - band * band_steps_) * size_.width;
  }
  bool Fits(const std::string& text, StepRange steps) const {
    const int width = static_cast<int>(steps.end - steps.begin) * size_.width;
    return TextWidth(text) + kTextMargin <= width;
  }

 private:
  const StepSize& size_;
  std::size_t steps_;
  std::size_t band_steps_;
  std::size_t bands_ = 1;
};

std::string Numbers(const SvgSegment& lines) {
  return lines.lowest_line == lines.highest_line
             ? fmt::format("{}", lines.lowest_line)
             : fmt::format("{}-{}", lines.lowest_line, lines.highest_line);
}

// Joins lines of a script until there is room for their numbers, and adds the numbers as labels.
std::vector<SvgSegment> JoinLines(const std::vector<SvgSegment>& operations, const Scale& scale) {
  std::vector<SvgSegment> joined;
  for (const SvgSegment& next : operations) {
    if (joined.empty() || next.lowest_line == 0 || next.title != joined.back().title ||
        scale.Fits(Numbers(joined.back()), joined.back().steps)) {
      joined.push_back(next);
      continue;
    }
    SvgSegment& last = joined.back();
    last.steps.end = next.steps.end;
    last.lowest_line = std::min(last.lowest_line, next.lowest_line);
    last.highest_line = std::max(last.highest_line, next.highest_line);
  }
  for (SvgSegment& segment : joined) {
    if (segment.lowest_line == 0) continue;
    segment.labels = {Numbers(segment)};
    segment.title += ':' + segment.labels.front();
  }
  return joined;
}

struct Lane {
  const char* name;
  std::vector<SvgSegment> segments;
};

std::vector<Lane> LanesOf(const SvgRun& run, const Scale& scale) {
  std::vector<Lane> lanes;
  if (run.scripts.size() > 1) lanes.push_back({"file", run.scripts});
  lanes.push_back({HasOnlyLines(run) ? "line" : "script", JoinLines(run.operations, scale)});
  lanes.push_back({"TAP", run.tap_states});
  return lanes;
}

std::string NoteOf(const SvgRun& run, const Scale& scale) {
  if (run.total_steps == 0) return "No pin was driven";
  if (run.total_steps == scale.Steps()) return "";
  return fmt::format("The first {} of {} steps", scale.Steps(), run.total_steps);
}

class Drawing {
 public:
  // `run` and `stream` must outlive this object.
  Drawing(const SvgRun& run, std::ostream& stream);
  void Draw();

 private:
  template <class... Values>
  void Print(fmt::format_string<const Values&...> format, const Values&... values) {
    stream_ << fmt::format(format, values...);
  }
  void DrawBand(int y);
  void DrawRuler(int y);
  void DrawLane(const Lane& lane, int y);
  void DrawShape(const SvgSegment& segment, StepRange piece, int y);
  void DrawPin(int pin, int y);
  void DrawReads(int y);
  void DrawMark(const SvgRead& read, int x, int y);
  int DrawLabel(const SvgRead& read, int x, int begin, int end, int y);
  StepRange Piece(StepRange steps) const;
  int X(std::size_t step) const { return scale_.X(band_, step); }

  const SvgRun& run_;
  std::ostream& stream_;
  const Scale scale_;
  const std::vector<Lane> lanes_;
  std::vector<const char*> rows_;  // the names of the rows
  int band_height_;
  std::size_t band_ = 0;  // the band that is being drawn
  StepRange steps_;       // the steps of this band
};

Drawing::Drawing(const SvgRun& run, std::ostream& stream)
    : run_(run), stream_(stream), scale_(run), lanes_(LanesOf(run, scale_)) {
  for (const Lane& lane : lanes_) rows_.push_back(lane.name);
  rows_.insert(rows_.end(), std::begin(kPinNames), std::end(kPinNames));
  if (!run.reads.empty() && run.reads.front().step < scale_.Steps()) rows_.push_back("read");
  band_height_ = kRulerHeight + static_cast<int>(rows_.size()) * kRowHeight;
}

void Drawing::Draw() {
  const std::string note = NoteOf(run_, scale_);
  const int distance = band_height_ + kBandGap;
  const int width = std::max(scale_.Width(), TextWidth(note) + 2 * kNameX);
  const int height =
      kTop + static_cast<int>(scale_.Bands()) * distance + (note.empty() ? 0 : kNoteHeight);
  Print(
      "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0}\" height=\"{1}\" "
      "viewBox=\"0 0 {0} {1}\" role=\"img\" font-family=\"monospace\" font-size=\"10\">\n"
      "<title>Pins of the probe (one step is 1 us)</title>\n{2}"
      "<rect {3} width=\"{0}\" height=\"{1}\"/>\n",
      width, height, kDarkStyle, kPage);
  int top = kTop;
  for (band_ = 0; band_ < scale_.Bands(); ++band_, top += distance) {
    steps_ = scale_.Band(band_);
    DrawBand(top);
  }
  if (!note.empty()) {
    Print("<text {} x=\"{}\" y=\"{}\" font-style=\"italic\">{}</text>\n", kInk, kNameX, height - 8,
          note);
  }
  stream_ << "</svg>\n";
}

void Drawing::DrawBand(int y) {
  DrawRuler(y);
  y += kRulerHeight;
  for (const Lane& lane : lanes_) {
    DrawLane(lane, y);
    y += kRowHeight;
  }
  Print("<g {}>\n", kWave);
  for (int pin = 0; pin < kPinCount; ++pin, y += kRowHeight) DrawPin(pin, y);
  stream_ << "</g>\n";
  DrawReads(y + kShapeHeight / 2);
}

// Draws the names of the rows, and a vertical line at each tick with the time above the line.
void Drawing::DrawRuler(int y) {
  std::string lines;
  std::string times;
  for (std::size_t step = steps_.begin; step <= steps_.end; step += scale_.TickSteps()) {
    const int x = X(step);
    lines += fmt::format("M{}.5 {}V{}", x, y + kBaseline + 2, y + band_height_);
    times += fmt::format("<text x=\"{}\" y=\"{}\">{}</text>", x, y + kBaseline - 1, step);
  }
  Print("<path {} d=\"{}\"/>\n<g {} text-anchor=\"middle\">{}</g>\n", kGrid, lines, kInk, times);
  y += kBaseline;
  Print("<g {} font-size=\"11\">\n<text x=\"{}\" y=\"{}\">us</text>\n", kInk, kNameX, y);
  y += kRulerHeight;
  for (const char* const name : rows_) {
    Print("<text x=\"{}\" y=\"{}\">{}</text>\n", kNameX, y, name);
    y += kRowHeight;
  }
  stream_ << "</g>\n";
}

void Drawing::DrawLane(const Lane& lane, int y) {
  std::string texts;
  Print("<g {}>\n", kShape);
  for (const SvgSegment& segment : lane.segments) {
    const StepRange piece = Piece(segment.steps);
    if (piece.begin == piece.end) continue;
    DrawShape(segment, piece, y);
    const auto fits = [&](const std::string& text) { return scale_.Fits(text, piece); };
    const auto label = std::find_if(segment.labels.begin(), segment.labels.end(), fits);
    if (label == segment.labels.end()) continue;
    texts += fmt::format("<text x=\"{}\" y=\"{}\">{}</text>\n", (X(piece.begin) + X(piece.end)) / 2,
                         y + kBaseline - 1, XmlText(*label));
  }
  // The texts ignore the pointer, so that the titles of the shapes under them appear as tooltips.
  Print("</g>\n<g {} text-anchor=\"middle\" pointer-events=\"none\">\n{}</g>\n", kInk, texts);
}

// Draws a segment. Its ends are pointed, but an end that continues in another band is straight.
void Drawing::DrawShape(const SvgSegment& segment, StepRange piece, int y) {
  const int left = X(piece.begin);
  const int right = X(piece.end);
  const int begin = left + (piece.begin == segment.steps.begin ? kSlant : 0);
  const int end = right - (piece.end == segment.steps.end ? kSlant : 0);
  Print("<path d=\"M{0} {4}H{2}L{3} {5}L{2} {6}H{0}L{1} {5}Z\"><title>{7}</title></path>\n", begin,
        left, end, right, y, y + kShapeHeight / 2, y + kShapeHeight, XmlText(segment.title));
}

void Drawing::DrawPin(int pin, int y) {
  const auto level_y = [&](std::size_t step) {
    return (run_.steps[step].wires >> pin & 1) != 0 ? y : y + kShapeHeight;
  };
  if (steps_.begin == steps_.end) return;
  std::size_t last = std::max<std::size_t>(steps_.begin, 1) - 1;  // last step before this band
  Print("<path d=\"M{} {}", X(steps_.begin), level_y(last));
  for (std::size_t step = steps_.begin; step < steps_.end; last = step++) {
    if (level_y(step) != level_y(last)) Print("H{}V{}", X(step), level_y(step));
  }
  Print("H{}\"/>\n", X(steps_.end));
}

void Drawing::DrawReads(int y) {
  const std::vector<SvgRead>& reads = run_.reads;
  const auto in_band = [&](std::size_t i) {
    return i < reads.size() && reads[i].step >= steps_.begin && reads[i].step < steps_.end;
  };
  const auto middle = [&](std::size_t i) { return (X(reads[i].step) + X(reads[i].step + 1)) / 2; };
  int free = X(steps_.begin);  // where the next label may begin
  for (std::size_t i = 0; i < reads.size(); ++i) {
    if (!in_band(i)) continue;
    const int end = in_band(i + 1) ? middle(i + 1) - kReach : scale_.Width() - 2;
    DrawMark(reads[i], middle(i), y);
    free = DrawLabel(reads[i], middle(i), free, end, y);
  }
}

// Draws a dot if the values are as expected, or else a cross.
void Drawing::DrawMark(const SvgRead& read, int x, int y) {
  std::string title = XmlText(read.title);
  if (read.times > 1) title += fmt::format(", one of {} reads here", read.times);
  if (read.met) {
    Print("<circle {} cx=\"{}\" cy=\"{}\" r=\"{}\"><title>{}</title></circle>\n", kRead, x, y,
          kMarkRadius, title);
  } else {
    Print("<path {0} d=\"M{1} {2}L{3} {4}M{1} {4}L{3} {2}\"><title>{5}</title></path>\n", kUnmet,
          x - kMarkRadius, y - kMarkRadius, x + kMarkRadius, y + kMarkRadius, title);
  }
}

// Draws the first label that fits between `begin` and `end`, to the right of the mark at `x` if
// possible. Returns where the next label may begin.
int Drawing::DrawLabel(const SvgRead& read, int x, int begin, int end, int y) {
  for (const std::string& label : read.labels) {
    const int width = TextWidth(label);
    const bool right = x + kReach + width <= end;
    const int left_end = right ? x + kReach : x - kReach - width;
    if (left_end < begin) continue;
    Print("<text {} x=\"{}\" y=\"{}\">{}</text>\n", read.met ? kInk : kUnmetInk, left_end,
          y + kMarkRadius, XmlText(label));
    return std::max(x, left_end + width) + kReach;
  }
  return x + kReach;
}

// Returns the part of `steps` in this band, which may be empty.
StepRange Drawing::Piece(StepRange steps) const {
  const std::size_t begin = std::clamp(steps.begin, steps_.begin, steps_.end);
  return {begin, std::clamp(steps.end, begin, steps_.end)};
}

}  // namespace

void DrawSvg(const SvgRun& run, std::ostream& stream) {
  Drawing(run, stream).Draw();
}

}  // namespace icehost
