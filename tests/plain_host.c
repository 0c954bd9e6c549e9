/* A host in plain C11: loads the module MODULE and runs SCRIPT. Built with LACKS_ and the name of a
 * link_ function it does not define that one, and the module must refuse to load. */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

#include "entry/icescript.h"

#ifndef LACKS_link_config
int link_config(LinkHandle handle, int code, int value) {
  return handle && code >= value ? 0 : -1;
}
#endif
#ifndef LACKS_link_reset
int link_reset(LinkHandle handle, int kind) {
  return handle && kind == LINK_RESET_TARGET ? 0 : -1;
}
#endif
#ifndef LACKS_link_jtag_insert
int link_jtag_insert(LinkHandle handle, int ir_bits, unsigned char* ir, int dr_bits,
                     unsigned char* dr) {
  return handle && ir_bits && ir && dr_bits && dr ? 0 : -1;
}
#endif
#ifndef LACKS_link_jtag_execute
int link_jtag_execute(LinkHandle handle, unsigned char* capture) {
  memset(capture, 0x5a, JTAG_CAPTURE_BYTES);
  return handle ? 0 : -1;
}
#endif
#ifndef LACKS_link_gpio_operator
int link_gpio_operator(LinkHandle handle, int out_value, uint32_t* data, int oe_mask, int flags) {
  *data = (uint32_t)(out_value & oe_mask & flags);
  return handle ? 0 : -1;
}
#endif

static int Show(const char* message) {
  return fputs(message, stdout);
}

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  void* const module = dlopen(argv[1], RTLD_LAZY);
  if (module == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    return 3;
  }
  int (*entry)(LinkHandle, char*, PrintCallback) = NULL;
  *(void**)&entry = dlsym(module, "ImplementScr");
  const int result = entry(&argc, argv[2], Show);
  dlclose(module);
  return result == 0 ? 0 : 1;
}
