#include "host/picture/svg_drawing.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <vector>

#include "host/picture/svg_band.h"
#include "host/picture/svg_lanes.h"
#include "host/picture/svg_scale.h"
#include "host/picture/svg_style.h"

namespace icehost {
namespace {

// Pixels.
constexpr int kTop = 8;
constexpr int kBandGap = 16;
constexpr int kNoteHeight = 16;
constexpr int kNoteX = 6;

std::string NoteOf(const SvgRun& run, const SvgScale& scale) {
  if (run.total_steps == 0) return "No pin was driven";
  if (run.total_steps == scale.Steps()) return "";
  return fmt::format("The first {} of {} steps", scale.Steps(), run.total_steps);
}

}  // namespace

void DrawSvg(const SvgRun& run, std::ostream& stream) {
  const SvgScale scale(run);
  const std::vector<SvgLane> lanes = SvgLanes(run, scale);
  const std::string note = NoteOf(run, scale);
  SvgBand band(run, scale, lanes, stream);
  const int bands = static_cast<int>(scale.Bands());
  const int distance = band.Height() + kBandGap;
  const int width = std::max(scale.Width(), SvgTextWidth(note) + 2 * kNoteX);
  const int height = kTop + bands * distance + (note.empty() ? 0 : kNoteHeight);
  stream << fmt::format(
      "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0}\" height=\"{1}\" "
      "viewBox=\"0 0 {0} {1}\" role=\"img\" font-family=\"monospace\" font-size=\"10\">\n"
      "<title>Pins of the probe, one step is 1 us</title>\n{2}"
      "<rect {3} width=\"{0}\" height=\"{1}\"/>\n",
      width, height, kSvgDarkStyle, kSvgPage);
  for (int i = 0; i < bands; ++i) band.Draw(static_cast<std::size_t>(i), kTop + i * distance);
  if (!note.empty()) {
    stream << fmt::format("<text {} x=\"{}\" y=\"{}\" font-style=\"italic\">{}</text>\n", kSvgInk,
                          kNoteX, height - 8, note);
  }
  stream << "</svg>\n";
}

}  // namespace icehost
