// The lanes of a picture that stand above its pins.
#ifndef ICESCRIPT_HOST_PICTURE_SVG_LANES_H_
#define ICESCRIPT_HOST_PICTURE_SVG_LANES_H_

#include <string>
#include <vector>

#include "host/picture/svg_run.h"
#include "host/picture/svg_scale.h"

namespace icehost {

// Steps that have a meaning together. All texts are as in the script, not yet XML.
struct SvgSegment {
  StepRange steps;  // may go on beyond the steps that are drawn
  std::string title;
  // The longest first. The first that fits stands in the band that holds most of the segment, and
  // the first name that fits in the others.
  std::vector<std::string> labels;
  std::vector<std::string> names;
};

struct SvgLane {
  const char* label;
  std::vector<SvgSegment> segments;  // in order, with gaps where nothing is known
};

// The scripts where there are several, their operations, the states of the TAP.
std::vector<SvgLane> SvgLanes(const SvgRun& run, const SvgScale& scale);

// "examples/reset.ini:5 [CONTROL] ": what a title begins with.
std::string SvgPlace(const SvgRun& run, const SvgSource& source);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PICTURE_SVG_LANES_H_
