#include "gpio/gpio_scr.h"

#include <memory>

namespace icescript {

// The delegated constructor completes the object before parsing starts, so that the destructor
// frees the stack if the callback or an allocation throws.
GpioScr::GpioScr(char* path, PrintCallback callback) : GpioScr(callback) {
  status = ParseScr(path);
}

GpioScr::~GpioScr() {
  while (repeat_stack != nullptr) RepeatNodePop();
}

int GpioScr::ParseScr(char* path) {
  if (path == nullptr) {
    error = "No scr file specified.\n";
    return -1;
  }
  CIniFile ini(path);
  const int result = ini.ReadGpioFile();
  if (result < 0) {
    print(ini.error_msg);  // empty if the file is not a GPIO script
    return result == GPIO_READ_NOT_GPIO || result == GPIO_READ_OPEN_FAILED ? result : -1;
  }
  return AppendElements(ini) == 0 ? RefuseOpenRepeat() : -1;
}

int GpioScr::AppendElements(CIniFile& ini) {
  const auto refuse = [this](const char* message) {
    print(message);
    return -1;
  };
  const int elements = static_cast<int>(ini.GetGpioNum());
  for (int i = 0; i < elements; ++i) {
    // All these lines exist, so a negative value comes from the script, as in GPIO_OUT=-2, and
    // error_msg is empty.
    const int kind = ini.GetGpioValue(i, GPIO_FIELD_KIND);
    if (kind < 0) return refuse(ini.error_msg);
    const int out_value = ini.GetGpioValue(i, GPIO_FIELD_OUT_VALUE);
    if (out_value < 0) return refuse(ini.error_msg);
    const int oe_mask = ini.GetGpioValue(i, GPIO_FIELD_OE_MASK);
    if (oe_mask < 0) return refuse(",inifile.error");
    const int flags = ini.GetGpioValue(i, GPIO_FIELD_FLAGS);
    if (flags < 0) return refuse("inifile.error");
    const int repeat_count = ini.GetGpioValue(i, GPIO_FIELD_REPEAT_COUNT);
    if (repeat_count < 0) return refuse(ini.error_msg);

    GpioOperatorData* const node =
        ParseGpioOperatorData(out_value, oe_mask, flags, kind, repeat_count);
    if (node == nullptr) return -1;
    (head == nullptr ? head : tail->next) = node;
    tail = node;
    ++count;
  }
  return 0;
}

// Returns 0 if no REPT is open. Otherwise prints one error, however many are open, and returns -1.
int GpioScr::RefuseOpenRepeat() {
  if (RepeatNodePop() == nullptr) return 0;
  error = "syntax error: rept & endr not match.";
  print(error);
  return -1;
}

GpioOperatorData* GpioScr::ParseGpioOperatorData(int out_value, int oe_mask, int flags, int kind,
                                                 int repeat_count) {
  nodes.push_back({out_value, oe_mask, flags, /*gpio_data=*/0, kind, repeat_count, /*next=*/nullptr,
                   /*partner=*/nullptr, /*holds_pins=*/false});
  GpioOperatorData* const node = &nodes.back();
  if (kind == GPIO_KIND_REPT) {
    RepeatNodePush(node);
  } else if (kind != GPIO_KIND_ENDR) {
    MarkOpenBlock();
  } else if (!CloseBlock(node)) {
    nodes.pop_back();
    error = "error: rept & endr not match.";
    print(error);
    return nullptr;
  }
  return node;
}

// Pairs an ENDR with the innermost open REPT. Returns false if no REPT is open.
bool GpioScr::CloseBlock(GpioOperatorData* endr) {
  GpioOperatorData* const rept = RepeatNodePop();
  if (rept == nullptr) return false;
  rept->partner = endr;
  endr->partner = rept;
  endr->repeat_count = rept->repeat_count;
  if (rept->holds_pins) MarkOpenBlock();
  return true;
}

// Marks the innermost open block as containing pin operations. CloseBlock marks the outer blocks.
void GpioScr::MarkOpenBlock() {
  if (repeat_stack != nullptr) repeat_stack->node->holds_pins = true;
}

void GpioScr::RepeatNodePush(GpioOperatorData* node) {
  repeat_stack = new RepeatStackEntry{node, repeat_stack};
}

GpioOperatorData* GpioScr::RepeatNodePop() {
  if (repeat_stack == nullptr) return nullptr;
  const std::unique_ptr<RepeatStackEntry> top(repeat_stack);
  repeat_stack = top->below;
  return top->node;
}

}  // namespace icescript
