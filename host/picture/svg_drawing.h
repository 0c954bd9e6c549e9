// Draws a run.
#ifndef ICESCRIPT_HOST_PICTURE_SVG_DRAWING_H_
#define ICESCRIPT_HOST_PICTURE_SVG_DRAWING_H_

#include <ostream>

#include "host/picture/svg_run.h"

namespace icehost {

// A whole SVG 1.1 document, well-formed whatever the scripts contain. Colours and fonts are
// attributes, which every viewer knows; a style sheet has those of the reader's dark scheme.
void DrawSvg(const SvgRun& run, std::ostream& stream);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PICTURE_SVG_DRAWING_H_
