/* A host for the icescript plug-in: `host PLUGIN SCRIPT` loads the module PLUGIN and runs SCRIPT.
 * Its five link_ functions simulate a target with an IDCODE (instruction 1) and a scratch register
 * (instruction 2). In a debug server, these functions drive the probe.
 *
 *   cc -std=c11 -rdynamic -o host host.c
 */
#include <dlfcn.h>
#include <icescript.h>
#include <stdio.h>

/* The handle points to this structure. */
struct Probe {
  int wire_mode; /* a CDI_ANSWER_ value */
  int ir_bits, dr_bits;
  const unsigned char *ir, *dr; /* valid until link_jtag_execute returns */
  unsigned instruction;         /* stays the same if a scan has no IR */
  uint32_t scratch;
  int levels, enables; /* GPIO_PIN_ bits */
};

enum { CAPTURE_START = 2, CAPTURE_BITS = 8 * (JTAG_CAPTURE_BYTES - CAPTURE_START), IR_BITS = 256 };

/* A failed call ends a JTAG script without a message, so the host must print the reason. */
static int Refuse(const char* why) {
  fprintf(stderr, "host: %s\n", why);
  return -1; /* means failure in all five functions */
}

int link_config(LinkHandle handle, int code, int value) {
  struct Probe* const probe = handle;
  if (code == LINK_CONFIG_GET_CDI) return probe->wire_mode;
  if (code != LINK_CONFIG_CDI_MODE) return Refuse("unknown configuration code");
  probe->wire_mode = value == CDI_MODE_2WIRE ? CDI_ANSWER_2WIRE : CDI_ANSWER_JTAG5;
  return 0;
}

int link_reset(LinkHandle handle, int kind) {
  struct Probe* const probe = handle;
  if (kind != LINK_RESET_TARGET) return Refuse("unknown kind of reset");
  probe->scratch = 0;
  return 0;
}

int link_jtag_insert(LinkHandle handle, int ir_bits, unsigned char* ir, int dr_bits,
                     unsigned char* dr) {
  struct Probe* const probe = handle;
  if (ir_bits > IR_BITS) return Refuse("the IR is too long for this probe");
  if (dr_bits > CAPTURE_BITS) return Refuse("the DR is too long for this probe");
  probe->ir = ir;
  probe->dr = dr;
  probe->ir_bits = ir_bits;
  probe->dr_bits = dr_bits;
  return 0;
}

int link_jtag_execute(LinkHandle handle, unsigned char* capture) {
  struct Probe* const probe = handle;
  /* Over two wires, byte 0 of each register is for the probe. The chip's bits follow. */
  const int first = probe->wire_mode == CDI_ANSWER_2WIRE ? 8 : 0;
  if (probe->ir_bits > first) probe->instruction = probe->ir[first / 8];
  const unsigned instruction = probe->instruction;
  uint32_t held = instruction == 1 ? 0x1ce51001 : instruction == 2 ? probe->scratch : 0;
  for (int bit = first; bit < probe->dr_bits; ++bit) {
    capture[CAPTURE_START + bit / 8] |= (unsigned char)((held & 1) << bit % 8);
    held = held >> 1 | (uint32_t)(probe->dr[bit / 8] >> bit % 8 & 1) << 31;
  }
  if (instruction == 2) probe->scratch = held;
  return 0;
}

int link_gpio_operator(LinkHandle handle, int out_value, uint32_t* data, int oe_mask, int flags) {
  struct Probe* const probe = handle;
  if (flags & (GPIO_FLAG_START | GPIO_FLAG_WRITE_OUT)) probe->levels = out_value;
  if (flags & (GPIO_FLAG_START | GPIO_FLAG_WRITE_OE)) probe->enables = oe_mask;
  /* Pins that the script does not drive float high. */
  const int pins = (probe->levels | ~probe->enables) & GPIO_PIN_ALL;
  if (flags & GPIO_FLAG_READ_IN) *data = (uint32_t)pins;
  return 0;
}

/* A message may be a piece of a line: print it at once, and add nothing. */
static int Show(const char* message) {
  fputs(message, stdout);
  return fflush(stdout);
}

int main(int argc, char** argv) {
  if (argc != 3) {
    fputs("usage: host PLUGIN SCRIPT\n", stderr);
    return 2;
  }
  void* const module = dlopen(argv[1], RTLD_NOW);
  int (*run)(LinkHandle, char*, PrintCallback) = NULL;
  if (module != NULL) *(void**)&run = dlsym(module, "ImplementScr");
  if (run == NULL) {
    fprintf(stderr, "host: %s\n", dlerror());
    return 3;
  }
  struct Probe probe = {.wire_mode = CDI_ANSWER_JTAG5, .instruction = 1};
  const int result = run(&probe, argv[2], Show);
  dlclose(module);
  if (result == 0) return 0;
  fprintf(stderr, "host: %s failed\n", argv[2]);
  return 1;
}
