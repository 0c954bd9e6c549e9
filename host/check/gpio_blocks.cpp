#include "host/check/gpio_blocks.h"

#include <utility>

namespace icehost {

void GpioBlocks::Take(const ScriptLine& line, const icescript::CIniFile::gpio_element& element) {
  if (element.kind == icescript::GPIO_KIND_ENDR) {
    Close(line);
  } else if (element.kind == icescript::GPIO_KIND_REPT) {
    open_.push_back({line.Start()});
  } else if (!open_.empty()) {
    open_.back().empty = false;
  }
}

// What a block holds, the block around it holds.
void GpioBlocks::Close(const ScriptLine& endr) {
  if (open_.empty()) {
    problems_.Error(endr.Start(), "error: rept & endr not match. (no REPT is open)");
    return;
  }
  const Open block = open_.back();
  open_.pop_back();
  if (block.empty) {
    problems_.Warn(block.rept,
                   "this block holds no pin operation: it is skipped and delays nothing");
  } else if (!open_.empty()) {
    open_.back().empty = false;
  }
}

Problems GpioBlocks::Finish() {
  for (const Open& block : open_) {
    problems_.Error(block.rept, "syntax error: rept & endr not match. (this REPT has no ENDR)");
  }
  return std::move(problems_);
}

}  // namespace icehost
