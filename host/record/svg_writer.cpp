#include "host/record/svg_writer.h"

#include <algorithm>

#include "host/target/pin_names.h"

namespace icehost {
namespace {

constexpr std::size_t kMostSteps = 1000;

// Pixels.
constexpr int kLabelWidth = 48;
constexpr int kStepWidth = 10;
constexpr int kRowHeight = 26;
constexpr int kWaveHeight = 14;
constexpr int kTop = 10;
constexpr int kNoteHeight = 20;

// Of a character of a segment's text, rather too much than too little.
constexpr double kCharacterWidth = 5.4;

constexpr char kStyle[] =
    "<style>\n"
    "svg{background:#fff;color:#1f2328;font:9px monospace}\n"
    "text{fill:currentColor}.label{font-size:11px}.note{font-style:italic}\n"
    ".wave{fill:none;stroke:#0a58ca;stroke-width:1.5}\n"
    ".segment{fill:#eef2f7;stroke:#8c959f;stroke-width:.7}\n"
    "@media (prefers-color-scheme:dark){\n"
    "svg{background:#0d1117;color:#e6edf3}\n"
    ".wave{stroke:#6cb6ff}.segment{fill:#1c2430;stroke:#57606a}}\n"
    "</style>\n";

// In the order of TapState. The neighbours tell the DR column from the IR column.
constexpr const char* kShortTapNames[kTapStates] = {
    "TLR", "RTI", "Sel", "Cap", "Sh",  "Ex1", "Pau", "Ex2",
    "Upd", "Sel", "Cap", "Sh",  "Ex1", "Pau", "Ex2", "Upd",
};

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char ch : text) {
    escaped += ch == '<' ? "&lt;" : ch == '&' ? "&amp;" : std::string(1, ch);
  }
  return escaped;
}

int X(std::size_t step) {
  return kLabelWidth + static_cast<int>(step) * kStepWidth;
}

void WriteLabel(std::ostream& stream, const char* text, int y) {
  stream << "<text class=\"label\" x=\"6\" y=\"" << y + kWaveHeight - 3 << "\">" << text
         << "</text>\n";
}

}  // namespace

void SvgWriter::BeginOperation(std::size_t step, const std::string& name) {
  const bool same = !operations_.empty() && operations_.back().name == name;
  if (step >= kMostSteps || (same && name == kPinOperation)) return;
  // An operation without a step of its own leaves no room for its name.
  if (!operations_.empty() && operations_.back().begin == step) operations_.pop_back();
  operations_.push_back({step, name, ""});
}

void SvgWriter::Record(const PinStep& step) {
  if (++total_steps_ <= kMostSteps) steps_.push_back(step);
}

void SvgWriter::Write(std::ostream& stream) const {
  const int width = X(steps_.size()) + kStepWidth;
  const int height = kTop + kRowHeight * (2 + kPins) + kNoteHeight;
  stream << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\""
         << height << "\" viewBox=\"0 0 " << width << ' ' << height
         << "\" role=\"img\">\n<title>Pins of the probe, one step is 1 us</title>\n"
         << kStyle;
  int y = kTop;
  WriteSegments(stream, operations_, y);
  WriteLabel(stream, "TAP", y += kRowHeight);
  WriteSegments(stream, TapSegments(), y);
  for (int pin = 0; pin < kPins; ++pin) WritePin(stream, pin, y += kRowHeight);
  if (total_steps_ > steps_.size()) {
    stream << "<text class=\"note\" x=\"6\" y=\"" << height - 6 << "\">The first " << steps_.size()
           << " of " << total_steps_ << " steps</text>\n";
  }
  stream << "</svg>\n";
}

std::vector<SvgWriter::Segment> SvgWriter::TapSegments() const {
  std::vector<Segment> segments;
  for (std::size_t i = 0; i < steps_.size(); ++i) {
    if (i > 0 && steps_[i].tap == steps_[i - 1].tap) continue;
    const auto tap = steps_[i].tap;
    segments.push_back(tap.has_value()
                           ? Segment{i, TapStateName(*tap), kShortTapNames[static_cast<int>(*tap)]}
                           : Segment{i, "unknown", "?"});
  }
  return segments;
}

void SvgWriter::WriteSegments(std::ostream& stream, const std::vector<Segment>& segments,
                              int y) const {
  for (std::size_t i = 0; i < segments.size(); ++i) {
    const Segment& segment = segments[i];
    const std::size_t end = i + 1 < segments.size() ? segments[i + 1].begin : steps_.size();
    if (end <= segment.begin) continue;
    const int width = X(end) - X(segment.begin);
    const auto fits = [width](const std::string& text) {
      return static_cast<double>(text.size()) * kCharacterWidth + 2 <= width;
    };
    const std::string text = fits(segment.name)         ? segment.name
                             : fits(segment.short_name) ? segment.short_name
                                                        : "";
    stream << "<g><title>" << Escaped(segment.name) << "</title><rect class=\"segment\" x=\""
           << X(segment.begin) << "\" y=\"" << y << "\" width=\"" << width << "\" height=\""
           << kWaveHeight << "\" rx=\"3\"/><text text-anchor=\"middle\" x=\""
           << X(segment.begin) + width / 2 << "\" y=\"" << y + kWaveHeight - 4 << "\">"
           << Escaped(text) << "</text></g>\n";
  }
}

void SvgWriter::WritePin(std::ostream& stream, int pin, int y) const {
  WriteLabel(stream, kPinNames[pin], y);
  if (steps_.empty()) return;
  const auto level_y = [&](std::size_t i) {
    return (steps_[i].wires >> pin & 1) != 0 ? y : y + kWaveHeight;
  };
  stream << "<path class=\"wave\" d=\"M" << X(0) << ' ' << level_y(0);
  for (std::size_t i = 1; i < steps_.size(); ++i) {
    if (level_y(i) != level_y(i - 1)) stream << 'H' << X(i) << 'V' << level_y(i);
  }
  stream << 'H' << X(steps_.size()) << "\"/>\n";
}

}  // namespace icehost
