#include "host/picture/svg_marks.h"

#include <fmt/format.h>

#include "host/picture/svg_lanes.h"

namespace icehost {
namespace {

// From the middle of a mark to where a text may begin or end.
constexpr int kReach = 6;

std::vector<std::string> Labels(const SvgRead& read) {
  if (read.unmet.empty()) return {read.value};
  const std::string first = read.unmet.substr(0, read.unmet.find(';'));
  return {read.unmet, first, first.substr(0, first.find(',')), read.value};
}

std::string Title(const SvgRun& run, const SvgRead& read) {
  const std::string many =
      read.times > 1 ? fmt::format(", one of {} reads here", read.times) : std::string();
  return SvgPlace(run, read.source) +
         (read.unmet.empty() ? fmt::format("read {}", read.value) : read.unmet) + many;
}

// Room for a label beside a mark.
struct Room {
  int begin;
  int end;
};

// Gives the mark the longest label that has room: on its right, or else on its left.
void Label(const std::vector<std::string>& labels, Room left, Room right, SvgMark& mark) {
  for (const std::string& label : labels) {
    const int width = SvgTextWidth(label);
    const bool fits_right = width <= right.end - right.begin;
    if (!fits_right && width > left.end - left.begin) continue;
    mark.label = label;
    mark.label_x = fits_right ? right.begin : left.end - width;
    return;
  }
}

}  // namespace

std::vector<SvgMark> SvgMarks(const SvgRun& run, const SvgScale& scale, std::size_t band) {
  const StepRange steps = scale.Band(band);
  std::vector<const SvgRead*> reads;
  for (const SvgRead& read : run.reads) {
    if (read.step >= steps.begin && read.step < steps.end) reads.push_back(&read);
  }
  const auto middle = [&](std::size_t i) {
    const std::size_t step = reads[i]->step;
    return (scale.X(band, step) + scale.X(band, step + 1)) / 2;
  };
  std::vector<SvgMark> marks;
  int free = scale.X(band, steps.begin);
  for (std::size_t i = 0; i < reads.size(); ++i) {
    SvgMark mark = {middle(i), reads[i]->unmet.empty(), Title(run, *reads[i]), "", 0};
    const int end = i + 1 < reads.size() ? middle(i + 1) - kReach : scale.Width() - 2;
    Label(Labels(*reads[i]), {free, mark.x - kReach}, {mark.x + kReach, end}, mark);
    free = mark.x + kReach;
    if (mark.label_x > mark.x) free = mark.label_x + SvgTextWidth(mark.label) + kReach;
    marks.push_back(std::move(mark));
  }
  return marks;
}

}  // namespace icehost
