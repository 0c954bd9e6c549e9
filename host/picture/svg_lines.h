// The lines of a GPIO script as a lane of a picture.
#ifndef ICESCRIPT_HOST_PICTURE_SVG_LINES_H_
#define ICESCRIPT_HOST_PICTURE_SVG_LINES_H_

#include <string>
#include <vector>

#include "host/picture/svg_lanes.h"
#include "host/picture/svg_run.h"
#include "host/picture/svg_scale.h"

namespace icehost {

// Operations that follow each other.
struct SvgOperations {
  std::vector<SvgOperation>::const_iterator begin;
  std::vector<SvgOperation>::const_iterator end;
};

// Appends the pin operations of one script, in segments as short as their line numbers fit into: a
// segment is a line, or several that follow each other, or a loop that is too short for its lines.
// `words`: that the numbers are those of lines is yet to be said.
void AppendSvgLines(const SvgRun& run, SvgOperations operations, const SvgScale& scale, bool words,
                    std::vector<SvgSegment>& segments);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PICTURE_SVG_LINES_H_
