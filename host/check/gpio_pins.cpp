#include "host/check/gpio_pins.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/check/gpio_items.h"
#include "host/check/remarks.h"

namespace icehost {
namespace {

bool Holds(int pins, unsigned pin) {
  return (static_cast<unsigned>(pins) >> pin & 1U) != 0;
}

std::string Names(int pins) {
  Words names;
  for (unsigned pin = 0; pin < kPins; ++pin) {
    if (Holds(pins, pin)) names.push_back(ItemKeys()[pin]);
  }
  return Listed(names, "or");
}

}  // namespace

void GpioPins::Take(const ScriptLine& line, const icescript::CIniFile::gpio_element& element,
                    int named) {
  if (element.kind == icescript::GPIO_KIND_REPT) blocks_.push_back(line.number);
  if (element.kind == icescript::GPIO_KIND_ENDR) CloseBlock();
  if (element.out_value < 0 || element.oe_mask < 0) return;  // an error of its own
  if ((element.flags & GPIO_FLAG_WRITE_OE) != 0) Enable(line, element.oe_mask);
  const int changed = (element.out_value ^ levels_) & GPIO_PIN_ALL;
  levels_ = element.out_value;
  if (((named | changed) & ~enables_) != 0) SetIdle(line, named, changed);
  if ((enables_ & GPIO_PIN_TDO) != 0 && !tdo_told_) CheckTdo(line, element.flags, named, changed);
}

void GpioPins::Enable(const ScriptLine& line, int enables) {
  enables_ = enables & GPIO_PIN_ALL;
  if ((enables_ & GPIO_PIN_TDO) == 0) tdo_told_ = false;
  for (unsigned pin = 0; pin < kPins; ++pin) {
    if (Holds(enables_, pin)) enabled_at_[pin] = line.number;
  }
  const auto reaches = [this](const Idle& idle) { return (idle.pins & enables_) != 0; };
  idle_.erase(std::remove_if(idle_.begin(), idle_.end(), reaches), idle_.end());
}

// What is enabled earlier in a block is so after its levels, too.
void GpioPins::CloseBlock() {
  if (blocks_.empty()) return;
  const int rept = blocks_.back();
  blocks_.pop_back();
  int enabled = 0;
  for (unsigned pin = 0; pin < kPins; ++pin) {
    if (enabled_at_[pin] > rept) enabled |= 1 << pin;
  }
  const auto reaches = [=](const Idle& idle) {
    return idle.place.line > rept && (idle.pins & enabled) != 0;
  };
  idle_.erase(std::remove_if(idle_.begin(), idle_.end(), reaches), idle_.end());
}

// A word sets all pins, whichever are meant: what it raises is idle where no level that it changes
// is seen.
void GpioPins::SetIdle(const ScriptLine& line, int named, int changed) {
  int known = 0;
  for (const Idle& idle : idle_) known |= idle.pins;
  for (unsigned pin = 0; pin < kPins; ++pin) {
    if (Holds(named & ~enables_ & ~known, pin)) idle_.push_back({PlaceOfKey(line, pin), 1 << pin});
  }
  const int by_word = changed & levels_ & ~named;
  if ((changed & enables_) == 0 && (by_word & ~known) != 0) {
    idle_.push_back({PlaceOfKey(line, kOut), by_word});
  }
}

// Once for as long as it is driven: every script begins with it driven, and most never mind.
void GpioPins::CheckTdo(const ScriptLine& line, int flags, int named, int changed) {
  const bool by_name = (named & GPIO_PIN_TDO) != 0;
  tdo_told_ = true;
  if (by_name || (changed & GPIO_PIN_TDO) != 0) {
    problems_.Warn(
        PlaceOfKey(line, by_name ? kTdo : kOut),
        "this drives TDO, which is the target's to drive (GPIO_OE=0x1F leaves it alone)");
  } else if ((flags & GPIO_FLAG_READ_IN) != 0) {
    problems_.Warn(PlaceOfKey(line, kPrint),
                   "TDO is driven by the probe, whose own level is read, not the target's "
                   "(GPIO_OE=0x1F leaves it to the target)");
  } else if ((flags & GPIO_FLAG_WRITE_OE) != 0) {
    problems_.Warn(PlaceOfKey(line, kOe),
                   fmt::format("this enables TDO, which is the target's to drive ({})",
                               DidYouMean(fmt::format("0x{:02X}", enables_ & ~GPIO_PIN_TDO))));
  } else {
    tdo_told_ = false;
  }
}

void GpioPins::Finish() {
  for (const Idle& idle : idle_) {
    problems_.Warn(idle.place, fmt::format("this level reaches no pin: GPIO_OE does not enable {}, "
                                           "here or on a later line",
                                           Names(idle.pins)));
  }
}

}  // namespace icehost
