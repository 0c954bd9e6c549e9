#include "gpio/gpio_loop.h"

#include "base/print_line.h"

namespace icescript {
namespace {

// This is unsigned because an int would overflow after INT_MAX reads. Messages show it as an int.
std::uint32_t gpio_read_counter = 0;

void ReportRead(PrintCallback print, std::uint32_t data) {
  const int number = static_cast<int>(gpio_read_counter++);
  PrintLine line;
  if (data != 0) {
    (line << "GPIO_DATA_" << number << " = 0x").Hex(data) << "\n";
  } else {
    line << "error: Get GPIO_DATA_" << number << " fail.";
  }
  print(line.Text());
}

// Returns the node to execute after a REPT. If the block runs again, this is its first node.
// Otherwise restores the count and returns the node after the block. Skips a block without pin
// operations, because it could run for years without a call in which the host can stop it.
GpioOperatorData* NextAfterRept(GpioOperatorData* rept) {
  if (!rept->holds_pins) return rept->partner->next;
  if (rept->repeat_count > 0) {
    --rept->repeat_count;
    return rept->next;
  }
  rept->repeat_count = rept->partner->repeat_count;
  return rept->partner->next;
}

}  // namespace

bool RunGpioOperators(LinkHandle handle, PrintCallback print, GpioOperatorData* first) {
  GpioOperatorData* node = first;
  while (node != nullptr) {
    if (node->kind == GPIO_KIND_REPT) {
      node = NextAfterRept(node);
    } else if (node->kind == GPIO_KIND_ENDR) {
      node = node->partner;
    } else {
      if (link_gpio_operator(handle, node->out_value, &node->gpio_data, node->oe_mask,
                             node->flags) < 0) {
        return false;
      }
      if ((node->flags & GPIO_FLAG_READ_IN) != 0) ReportRead(print, node->gpio_data);
      node = node->next;
    }
  }
  return true;
}

}  // namespace icescript
