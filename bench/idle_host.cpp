#include "bench/idle_host.h"

int idle_runs = 0;
int idle_stops = -1;

int DropMessage(const char* /*message*/) {
  return 0;
}

int link_config(LinkHandle /*handle*/, int /*code*/, int /*value*/) {
  return 0;
}

int link_reset(LinkHandle /*handle*/, int /*kind*/) {
  return 0;
}

int link_jtag_insert(LinkHandle /*handle*/, int /*ir_bits*/, unsigned char* /*ir*/, int /*dr_bits*/,
                     unsigned char* /*dr*/) {
  return 0;
}

int link_jtag_execute(LinkHandle /*handle*/, unsigned char* /*capture*/) {
  return 0;
}

int link_gpio_operator(LinkHandle handle, int /*out_value*/, uint32_t* data, int /*oe_mask*/,
                       int flags) {
  if ((flags & GPIO_FLAG_READ_IN) != 0) *data = GPIO_PIN_TDO;
  return *static_cast<int*>(handle);
}
