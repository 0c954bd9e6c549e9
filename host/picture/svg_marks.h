// Where pins were read, as marks under the pins of a picture.
#ifndef ICESCRIPT_HOST_PICTURE_SVG_MARKS_H_
#define ICESCRIPT_HOST_PICTURE_SVG_MARKS_H_

#include <string>
#include <vector>

#include "host/picture/svg_run.h"
#include "host/picture/svg_scale.h"

namespace icehost {

// A mark in the middle of its step. All pixels are from the left of the picture.
struct SvgMark {
  int x;
  bool met;
  std::string title;
  std::string label;  // empty where none has room
  int label_x;        // its left end
};

// The marks of a band, from left to right, with labels that touch neither each other nor a mark.
std::vector<SvgMark> SvgMarks(const SvgRun& run, const SvgScale& scale, std::size_t band);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PICTURE_SVG_MARKS_H_
