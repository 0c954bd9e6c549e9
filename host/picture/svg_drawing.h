// Draws the pins of a run as a timing diagram.
#ifndef ICESCRIPT_HOST_PICTURE_SVG_DRAWING_H_
#define ICESCRIPT_HOST_PICTURE_SVG_DRAWING_H_

#include <cstddef>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "host/events/events.h"
#include "host/events/output.h"
#include "host/pins/recording_port.h"

namespace icehost {

// The most steps that a picture shows: four printed pages.
constexpr std::size_t kMostSvgSteps = 2000;

// A range of steps with a common meaning, such as an operation. All texts here and below may
// contain any bytes.
struct SvgSegment {
  StepRange steps;  // not empty; may extend beyond the steps that are kept
  std::string title;
  std::vector<std::string> labels;  // DrawSvg draws the first that fits
  // The lines of a GPIO script in the segment, which DrawSvg adds to the texts; 0 if it has none.
  int lowest_line = 0;
  int highest_line = 0;
};

// All reads in one step.
struct SvgRead {
  std::size_t step;
  bool met;  // everything read here was as expected
  std::string title;
  std::vector<std::string> labels;  // DrawSvg draws the first that fits
  long times;                       // the number of reads in this step
};

// The contents of a picture, in the order of the steps.
struct SvgRun {
  std::vector<PinStep> steps;  // the first steps, at most kMostSvgSteps
  std::size_t total_steps = 0;
  std::vector<SvgSegment> scripts;
  std::vector<SvgSegment> operations;
  std::vector<SvgSegment> tap_states;
  std::vector<SvgRead> reads;  // at most one for each step
};

// Writes a whole SVG 1.1 document, which is always well-formed. Colours and fonts are attributes,
// which every viewer supports. A style sheet adds the colours of a dark scheme.
void DrawSvg(const SvgRun& run, std::ostream& stream);

// Returns an output that draws the picture when the run ends. `stream` must outlive it.
std::unique_ptr<Output> MakeSvg(std::ostream& stream);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PICTURE_SVG_DRAWING_H_
