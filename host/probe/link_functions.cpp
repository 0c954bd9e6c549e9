// The functions that icehost exports to the plug-in.
#include "entry/icescript.h"
#include "host/probe/probe.h"

namespace {
icehost::Probe& ProbeOf(LinkHandle handle) {
  return *static_cast<icehost::Probe*>(handle);
}
}  // namespace

int link_config(LinkHandle handle, int code, int value) {
  return ProbeOf(handle).Config(code, value);
}

int link_reset(LinkHandle handle, int kind) {
  return ProbeOf(handle).Reset(kind);
}

int link_jtag_insert(LinkHandle handle, int ir_bits, unsigned char* ir, int dr_bits,
                     unsigned char* dr) {
  return ProbeOf(handle).Insert(ir_bits, ir, dr_bits, dr);
}

int link_jtag_execute(LinkHandle handle, unsigned char* capture) {
  return ProbeOf(handle).Execute(capture);
}

int link_gpio_operator(LinkHandle handle, int out_value, uint32_t* data, int oe_mask, int flags) {
  return ProbeOf(handle).Gpio(out_value, *data, oe_mask, flags);
}
