// Draws one of the bands that a picture is made of.
#ifndef ICESCRIPT_HOST_PICTURE_SVG_BAND_H_
#define ICESCRIPT_HOST_PICTURE_SVG_BAND_H_

#include <ostream>
#include <vector>

#include "host/picture/svg_lanes.h"
#include "host/picture/svg_marks.h"
#include "host/picture/svg_run.h"
#include "host/picture/svg_scale.h"

namespace icehost {

// A ruler, the lanes, the pins and, where the picture has any, the marks of what was read.
class SvgBand {
 public:
  // All must outlive this object.
  SvgBand(const SvgRun& run, const SvgScale& scale, const std::vector<SvgLane>& lanes,
          std::ostream& stream);

  // In pixels, the same for every band.
  int Height() const;
  void Draw(std::size_t band, int top);

 private:
  void DrawNames(int y);
  void DrawRuler(std::size_t band, int y);
  void DrawLane(const SvgLane& lane, std::size_t band, int y);
  void DrawShape(const SvgSegment& segment, StepRange piece, std::size_t band, int y);
  void DrawSegmentText(const SvgSegment& segment, StepRange piece, std::size_t band, int y);
  void DrawPin(int pin, std::size_t band, int y);
  void DrawMark(const SvgMark& mark, int y);

  const SvgRun& run_;
  const SvgScale& scale_;
  const std::vector<SvgLane>& lanes_;
  std::ostream& stream_;
  bool has_marks_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PICTURE_SVG_BAND_H_
