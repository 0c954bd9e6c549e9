// A plug-in that does not run the script. The environment variable FAULT selects what it does
// instead; by default it only returns success.
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include "entry/icescript.h"

int ImplementScr(LinkHandle handle, char* /*path*/, PrintCallback callback) {
  const char* const variable = std::getenv("FAULT");
  const std::string_view fault = variable != nullptr ? variable : "";
  if (fault == "throw") throw std::runtime_error("out of sorts");
  if (fault == "odd") throw 1;
  if (fault == "exit") {
    callback("A message.");
    std::exit(0);
  }
  if (fault == "read pins") {
    std::uint32_t data = 0;
    return link_gpio_operator(handle, 0, &data, 0, GPIO_FLAG_READ_IN) < 0 ? -1 : 0;
  }
  if (fault == "query") return link_config(handle, LINK_CONFIG_GET_CDI, 0) < 0 ? -1 : 0;
  if (fault == "reset") return link_reset(handle, 9);
  if (fault == "config") return link_config(handle, 7, 0);
  if (fault == "insert" || fault == "repeat") {
    std::uint8_t bits[JTAG_IR_MAX_BYTES] = {};
    const int inserted = link_jtag_insert(handle, 5, bits, 8, bits);
    if (fault == "insert") return inserted;
    std::uint8_t capture[JTAG_CAPTURE_BYTES] = {};
    link_jtag_execute(handle, capture);
    return link_jtag_execute(handle, capture);
  }
  if (fault == "quick_exit") std::quick_exit(0);
  return 0;
}
