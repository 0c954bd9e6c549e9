// Draws a run as a timing diagram.
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

// The most steps that a picture shows: four pages of paper.
constexpr std::size_t kMostSvgSteps = 2000;

// Steps that have one meaning. Here and below, texts have whatever bytes the scripts have.
struct SvgSegment {
  StepRange steps;  // never empty; may go on beyond the steps that are kept
  std::string title;
  std::vector<std::string> labels;  // the first that fits is drawn
  // Of a GPIO script, whose path is the title; the drawing adds their numbers. 0: not lines.
  int lowest_line = 0;
  int highest_line = 0;
};

// The reads of one step.
struct SvgRead {
  std::size_t step;
  bool met;  // everything read here is as expected
  std::string title;
  std::vector<std::string> labels;  // the first that fits is drawn
  long times;
};

// A run as its picture shows it, in the order of its steps.
struct SvgRun {
  std::vector<PinStep> steps;  // the first of them, at most kMostSvgSteps
  std::size_t total_steps = 0;
  std::vector<SvgSegment> scripts;
  std::vector<SvgSegment> operations;
  std::vector<SvgSegment> tap_states;
  std::vector<SvgRead> reads;  // at most one for each step
};

// Writes a whole SVG 1.1 document, well-formed whatever the scripts contain. Every viewer knows the
// attributes that hold colours and fonts; a style sheet adds the colours of a dark scheme.
void DrawSvg(const SvgRun& run, std::ostream& stream);

// The picture of a run, drawn when it ends.
std::unique_ptr<Output> MakeSvg(std::ostream& stream);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PICTURE_SVG_DRAWING_H_
