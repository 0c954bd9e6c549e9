// How the steps of a picture become pixels: bands, one below the other, as wide as a page.
#ifndef ICESCRIPT_HOST_PICTURE_SVG_SCALE_H_
#define ICESCRIPT_HOST_PICTURE_SVG_SCALE_H_

#include <cstddef>
#include <string_view>

#include "host/events/events.h"
#include "host/picture/svg_run.h"

namespace icehost {

// Four pages of paper at 25 bands of 80 steps.
constexpr std::size_t kMostSvgSteps = 2000;

class SvgScale {
 public:
  explicit SvgScale(const SvgRun& run);

  std::size_t Steps() const { return steps_; }     // that are drawn
  std::size_t TickSteps() const { return tick_; }  // from one tick of the ruler to the next
  std::size_t Bands() const { return bands_; }     // at least one
  int Width() const;                               // of the picture, in pixels

  // The steps of a band; and those of `steps` that are in it, as one that is empty or not.
  StepRange Band(std::size_t band) const;
  StepRange Piece(StepRange steps, std::size_t band) const;
  // The band in which most of `steps` are: the first of several.
  std::size_t WidestBand(StepRange steps) const;

  // Where a step of a band begins, in pixels from the left of the picture; that is also where the
  // step before it ends.
  int X(std::size_t band, std::size_t step) const;
  // Whether a text fits this many steps.
  bool Fits(std::string_view text, std::size_t steps) const;

 private:
  std::size_t steps_;
  int step_width_;
  std::size_t tick_;
  std::size_t bands_ = 1;
  std::size_t band_steps_;
};

// In pixels; too much rather than too little, of whatever monospaced font a viewer has.
int SvgTextWidth(std::string_view text);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PICTURE_SVG_SCALE_H_
