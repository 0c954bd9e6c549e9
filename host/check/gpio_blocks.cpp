#include "host/check/gpio_blocks.h"

#include <utility>

#include "entry/icescript.h"

namespace icehost {

void GpioBlocks::Take(const ScriptLine& line, const icescript::CIniFile::gpio_element& element) {
  if (element.kind == icescript::GPIO_KIND_ENDR) Close(line);
  if (!open_.empty()) {
    Open& block = open_.back();
    if (!block.first.has_value()) block.first = element;
    block.idle = block.idle && element.out_value == block.first->out_value &&
                 element.oe_mask == block.first->oe_mask &&
                 (element.flags & GPIO_FLAG_READ_IN) == 0;
  }
  if (element.kind == icescript::GPIO_KIND_REPT) open_.push_back({line.Start(), {}, true});
}

// What a block does, the block around it does. Its levels are then those of its ENDR, a line of
// the block around it.
void GpioBlocks::Close(const ScriptLine& endr) {
  if (open_.empty()) {
    problems_.Error(endr.Start(), "error: rept & endr not match. (no REPT is open)");
    return;
  }
  const Open block = open_.back();
  open_.pop_back();
  if (block.idle) problems_.Warn(block.rept, "no pin changes in this block and none is read");
  if (!open_.empty() && !block.idle) open_.back().idle = false;
}

Problems GpioBlocks::Finish() {
  for (const Open& block : open_) {
    problems_.Error(block.rept, "syntax error: rept & endr not match. (this REPT has no ENDR)");
  }
  return std::move(problems_);
}

}  // namespace icehost
