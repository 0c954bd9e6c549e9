#include "host/picture/svg_lines.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace icehost {
namespace {

// Lines that ran one after the other, downwards: once, or several times without anything between.
struct Group {
  int first;
  int last;
  StepRange steps;
  long times;
};

Group GroupOf(SvgOperations pass) {
  const SvgOperation& last = *(pass.end - 1);
  return {pass.begin->source.line, last.source.line, {pass.begin->steps.begin, last.steps.end}, 1};
}

bool SameLines(const Group& group, const Group& other) {
  return group.first == other.first && group.last == other.last;
}

std::string Numbers(const Group& group) {
  return group.first == group.last ? fmt::format("{}", group.first)
                                   : fmt::format("{}-{}", group.first, group.last);
}

bool Fits(const Group& group, const SvgScale& scale) {
  return scale.Fits(Numbers(group), group.steps.end - group.steps.begin);
}

// Cuts operations where a loop begins, begins again or is left.
std::vector<SvgOperations> Passes(SvgOperations operations) {
  std::vector<SvgOperations> passes;
  auto begin = operations.begin;
  const auto close = [&](auto end) {
    if (begin != end) passes.push_back({begin, end});
    begin = end;
  };
  for (auto next = operations.begin; next != operations.end; ++next) {
    if (next == begin) continue;
    const int line = next->source.line;
    if (line <= (next - 1)->source.line) {
      close(std::find_if(begin, next, [line](const SvgOperation& operation) {
        return operation.source.line >= line;
      }));
      close(next);
    } else if (!passes.empty() && SameLines(GroupOf(passes.back()), GroupOf({begin, next}))) {
      close(next);
    }
  }
  close(operations.end);
  return passes;
}

// Appends the lines of a pass that are wide enough for what they are called; the rest goes to the
// last of them.
void AppendCut(SvgOperations pass, const SvgScale& scale, std::vector<Group>& groups) {
  auto begin = pass.begin;
  for (auto next = pass.begin; next != pass.end;) {
    const Group group = GroupOf({begin, ++next});
    if (!Fits(group, scale)) continue;
    groups.push_back(group);
    begin = next;
  }
  if (begin == pass.end) return;
  const Group rest = GroupOf({begin, pass.end});
  groups.back().last = rest.last;
  groups.back().steps.end = rest.steps.end;
}

std::vector<Group> Groups(SvgOperations operations, const SvgScale& scale) {
  std::vector<Group> groups;
  bool narrow = false;  // the last one
  for (const SvgOperations& pass : Passes(operations)) {
    const Group group = GroupOf(pass);
    const bool fits = Fits(group, scale);
    if (fits) {
      AppendCut(pass, scale, groups);
    } else if (narrow && SameLines(groups.back(), group)) {
      groups.back().steps.end = group.steps.end;
      ++groups.back().times;
    } else {
      groups.push_back(group);
    }
    narrow = !fits;
  }
  return groups;
}

SvgSegment SegmentOf(const Group& group, const std::string& script, bool words) {
  const std::string word = group.first == group.last ? "line " : "lines ";
  const std::string numbers = Numbers(group);
  const std::string all =
      group.times == 1 ? numbers : fmt::format("{}, {} times", numbers, group.times);
  SvgSegment segment = {group.steps, script + ": " + word + all, {all, numbers}, {numbers}};
  if (words) segment.labels = {word + all, word + numbers, numbers};
  return segment;
}

}  // namespace

void AppendSvgLines(const SvgRun& run, SvgOperations operations, const SvgScale& scale, bool words,
                    std::vector<SvgSegment>& segments) {
  const std::string& script = run.scripts[operations.begin->source.script];
  for (const Group& group : Groups(operations, scale)) {
    segments.push_back(SegmentOf(group, script, words));
  }
}

}  // namespace icehost
