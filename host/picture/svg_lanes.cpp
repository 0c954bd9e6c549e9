#include "host/picture/svg_lanes.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "host/picture/svg_lines.h"

namespace icehost {
namespace {

// In the order of TapState. The neighbours tell the DR column from the IR column.
constexpr const char* kShortTapNames[kTapStates] = {
    "TLR", "RTI", "Sel", "Cap", "Sh",  "Ex1", "Pau", "Ex2",
    "Upd", "Sel", "Cap", "Sh",  "Ex1", "Pau", "Ex2", "Upd",
};

// How much of a scan a label tells.
struct Detail {
  bool length;
  bool ir;
  bool ir_captured;
  bool dr_sent;
};
constexpr Detail kDetails[] = {
    {true, true, true, true},
    {false, true, true, true},
    {false, true, false, false},
    {false, false, false, false},
};

const Field* Find(const std::vector<Field>& fields, std::string_view name) {
  const auto found = std::find_if(fields.begin(), fields.end(),
                                  [name](const Field& field) { return field.name == name; });
  return found != fields.end() ? &*found : nullptr;
}

// "IR 5 bits 0x01 -> 0x01"; `sent` and `captured` may be null.
std::string RegisterText(const char* name, int bits, const Field* sent, const Field* captured) {
  std::string text = name;
  if (bits > 0) text += fmt::format(" {} bits", bits);
  if (sent != nullptr) text += ' ' + sent->bytes;
  if (captured != nullptr && captured->bytes != "0x") text += " -> " + captured->bytes;
  return text;
}

std::string ScanText(const SvgOperation& scan, const Detail& detail) {
  const auto bits = [&](const char* name) {
    const Field* const field = Find(scan.sent, name);
    return detail.length && field != nullptr ? field->number : 0;
  };
  const auto ask = [](bool wanted, const std::vector<Field>& fields, const char* name) {
    return wanted ? Find(fields, name) : nullptr;
  };
  std::string text;
  if (detail.ir) {
    text = RegisterText("IR", bits("ir_bits"), Find(scan.sent, "ir"),
                        ask(detail.ir_captured, scan.captured, "ir_out")) +
           ", ";
  }
  return text + RegisterText("DR", bits("dr_bits"), ask(detail.dr_sent, scan.sent, "dr"),
                             Find(scan.captured, "dr_out"));
}

// The longest first.
std::vector<std::string> Texts(const SvgOperation& operation) {
  if (operation.kind == SvgOperation::Kind::kPins) return {"pins"};
  if (operation.kind == SvgOperation::Kind::kReset) return {"reset", "RST"};
  std::vector<std::string> texts;
  for (const Detail& detail : kDetails) texts.push_back(ScanText(operation, detail));
  return texts;
}

SvgSegment SegmentOf(const SvgRun& run, const SvgOperation& operation) {
  const std::vector<std::string> texts = Texts(operation);
  const std::string& section = operation.source.section;
  const std::string name = fmt::format("[{}]", section);
  SvgSegment segment = {
      operation.steps, SvgPlace(run, operation.source) + texts.front(), texts, {}};
  if (section.empty()) return segment;
  segment.names = {name};
  for (const std::string& text : texts) segment.labels.push_back(name + ' ' + text);
  segment.labels.push_back(name);
  std::stable_sort(segment.labels.begin(), segment.labels.end(),
                   [](const auto& one, const auto& other) { return one.size() > other.size(); });
  return segment;
}

SvgLane OperationLane(const SvgRun& run, const SvgScale& scale) {
  const auto& all = run.operations;
  const auto of_pins = [](const SvgOperation& operation) {
    return operation.kind == SvgOperation::Kind::kPins && operation.source.line > 0;
  };
  const bool only_lines = !all.empty() && std::all_of(all.begin(), all.end(), of_pins);
  SvgLane lane = {only_lines ? "line" : "script", {}};
  for (auto next = all.begin(); next != all.end();) {
    if (!of_pins(*next)) {
      lane.segments.push_back(SegmentOf(run, *next++));
      continue;
    }
    const auto end = std::find_if(next, all.end(), [&](const SvgOperation& operation) {
      return !of_pins(operation) || operation.source.script != next->source.script;
    });
    AppendSvgLines(run, {next, end}, scale, !only_lines, lane.segments);
    next = end;
  }
  return lane;
}

std::string BaseName(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

SvgLane ScriptLane(const SvgRun& run) {
  SvgLane lane = {"file", {}};
  const SvgOperation* last = nullptr;
  for (const SvgOperation& operation : run.operations) {
    if (last == nullptr || operation.source.script != last->source.script) {
      const std::string& path = run.scripts[operation.source.script];
      lane.segments.push_back({operation.steps, path, {path, BaseName(path)}, {BaseName(path)}});
    }
    lane.segments.back().steps.end = operation.steps.end;
    last = &operation;
  }
  return lane;
}

SvgLane TapLane(const SvgRun& run) {
  SvgLane lane = {"TAP", {}};
  for (std::size_t i = 0; i < run.steps.size(); ++i) {
    const auto tap = run.steps[i].tap;
    if (i == 0 || tap != run.steps[i - 1].tap) {
      const std::string name = tap.has_value() ? TapStateName(*tap) : "unknown";
      const std::string letters = tap.has_value() ? kShortTapNames[static_cast<int>(*tap)] : "?";
      lane.segments.push_back({{i, i}, name, {name, letters}, {name, letters}});
    }
    lane.segments.back().steps.end = i + 1;
  }
  return lane;
}

}  // namespace

std::string SvgPlace(const SvgRun& run, const SvgSource& source) {
  std::string place = run.scripts[source.script];
  if (source.line > 0) place += fmt::format(":{}", source.line);
  if (!source.section.empty()) place += fmt::format(" [{}]", source.section);
  return place + ": ";
}

std::vector<SvgLane> SvgLanes(const SvgRun& run, const SvgScale& scale) {
  std::vector<SvgLane> lanes = {ScriptLane(run)};
  if (lanes.front().segments.size() < 2) lanes.clear();
  lanes.push_back(OperationLane(run, scale));
  lanes.push_back(TapLane(run));
  return lanes;
}

}  // namespace icehost
