#include "host/picture/svg_scale.h"

#include <algorithm>

namespace icehost {
namespace {

constexpr std::size_t kMostBands = 25;

// Pixels.
constexpr int kLabelWidth = 56;
constexpr int kRightMargin = 28;  // holds what was read in the last step
constexpr int kTextMargin = 3;

// Of a picture with scans: a state of the TAP takes two steps, which hold three characters. Each
// step of a GPIO script is a line of it, whose number is to be read; and, where there are few, what
// is read in each step.
struct StepSize {
  int width;
  std::size_t in_band;
  std::size_t tick;
};
constexpr StepSize kScanSteps = {11, 80, 10};
constexpr StepSize kPinSteps = {22, 40, 5};
constexpr StepSize kFewPinSteps = {44, 20, 5};
static_assert(kMostSvgSteps == kMostBands * kScanSteps.in_band);

const StepSize& SizeFor(const SvgRun& run) {
  const bool scans = std::any_of(
      run.operations.begin(), run.operations.end(),
      [](const SvgOperation& operation) { return operation.kind == SvgOperation::Kind::kScan; });
  if (scans) return kScanSteps;
  return run.steps.size() > kFewPinSteps.in_band ? kPinSteps : kFewPinSteps;
}

std::size_t RoundUp(std::size_t number, std::size_t multiple) {
  return (number + multiple - 1) / multiple * multiple;
}

}  // namespace

// The steps are shared out evenly to no more bands than it takes, and every band but the last ends
// at a tick.
SvgScale::SvgScale(const SvgRun& run) {
  const StepSize& scale = SizeFor(run);
  step_width_ = scale.width;
  tick_ = scale.tick;
  steps_ = std::min(run.steps.size(), kMostBands * scale.in_band);
  band_steps_ = steps_;
  if (steps_ <= scale.in_band) return;
  bands_ = RoundUp(steps_, scale.in_band) / scale.in_band;
  band_steps_ = RoundUp((steps_ + bands_ - 1) / bands_, tick_);
  bands_ = RoundUp(steps_, band_steps_) / band_steps_;
}

int SvgScale::Width() const {
  return X(0, band_steps_) + kRightMargin;
}

StepRange SvgScale::Band(std::size_t band) const {
  return {band * band_steps_, std::min((band + 1) * band_steps_, steps_)};
}

StepRange SvgScale::Piece(StepRange steps, std::size_t band) const {
  const StepRange all = Band(band);
  const std::size_t begin = std::clamp(steps.begin, all.begin, all.end);
  return {begin, std::clamp(steps.end, begin, all.end)};
}

std::size_t SvgScale::WidestBand(StepRange steps) const {
  std::size_t widest = 0;
  std::size_t most = 0;
  for (std::size_t band = 0; band < bands_; ++band) {
    const StepRange piece = Piece(steps, band);
    if (piece.end - piece.begin <= most) continue;
    most = piece.end - piece.begin;
    widest = band;
  }
  return widest;
}

int SvgScale::X(std::size_t band, std::size_t step) const {
  return kLabelWidth + static_cast<int>(step - band * band_steps_) * step_width_;
}

bool SvgScale::Fits(std::string_view text, std::size_t steps) const {
  return SvgTextWidth(text) + kTextMargin <= static_cast<int>(steps) * step_width_;
}

// At a font size of 10 a character takes 6.02 pixels; one that is not ASCII may take twice as many.
int SvgTextWidth(std::string_view text) {
  long hundredths = 0;
  for (const char ch : text) {
    if ((ch & 0x80) == 0) hundredths += 602;
    if ((ch & 0xC0) == 0xC0) hundredths += 1204;
  }
  return static_cast<int>((hundredths + 99) / 100);
}

}  // namespace icehost
