/*
 * icescript: the interface between the script-execution plug-in, libicescript.so, and the debug
 * server (the host) that loads it. This header compiles as C11 or later and as C++11 or later.
 *
 * These conventions apply to everything below:
 *
 *  1. Loading. The plug-in exports ImplementScr, which the host finds with dlsym. It imports the
 *     five link_ functions by name. The host process must export them (link an executable with
 *     -rdynamic or an export list). Loading binds all five, so dlopen fails if one is missing.
 *  2. Threads. The plug-in makes every call on the thread that called ImplementScr, one call at a
 *     time, in script order. It starts no thread and takes no lock. Never run two scripts at the
 *     same time, because the counter of pin reads is an unprotected global variable.
 *  3. Pointers. A pointer from the plug-in is valid until the host function that received it
 *     returns. The arrays of link_jtag_insert stay valid until the next link_jtag_execute returns.
 *     The plug-in keeps no pointer from the host after ImplementScr returns.
 *  4. Bits. Scan data is an array of bytes, least significant byte first. Byte 0 contains bits 0 to
 *     7, and bit 0 is shifted first. n bits take (n + 7) / 8 bytes.
 *  5. Results. The comment on each link_ function says which results mean failure. The functions
 *     deliberately differ in these results. A failed call ends the script and is never retried. The
 *     plug-in prints a message if a call of a GPIO script fails. It prints none if a call of a JTAG
 *     script fails, so the host must report the reason.
 *  6. Exceptions. The plug-in neither throws exceptions of its own nor swallows any. An exception
 *     from a host function, the callback or the standard library (out of memory) passes through
 *     ImplementScr to the host after everything that the call allocated has been freed. This needs
 *     a single unwinder in the process, normally the shared libgcc_s. If the host has a private
 *     static one (g++ -static-libgcc -static-libstdc++ with an export list), exceptions that reach
 *     the plug-in abort the process. With -rdynamic instead, the plug-in uses the host's unwinder.
 *  7. Messages. A message is NUL-terminated text for the user, at most 1023 bytes long. It is in
 *     English, except for quoted parts of the script and the script's path. A message may lack a
 *     line break, be only a part of a line, or be empty. Print it unchanged and add nothing.
 *  8. Stability. Names, arguments, codes, bounds and the meaning of results do not change within
 *     version 1.x, so a host built with this header works with every later plug-in of 1.x.
 */
#ifndef ICESCRIPT_ENTRY_ICESCRIPT_H_
#define ICESCRIPT_ENTRY_ICESCRIPT_H_

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* The host's own handle. The plug-in passes it to each link_ function and never dereferences it. */
typedef void* LinkHandle;

/*
 * Prints one message. The plug-in ignores the result. The callback gets no handle, so its data must
 * be static or thread-local. It runs on the thread that called ImplementScr.
 */
typedef int (*PrintCallback)(const char* message);

/* ---- Codes that the plug-in passes --------------------------------------------------------- */

enum {
  LINK_CONFIG_CDI_MODE = 3, /* link_config: set the wire mode to a CDI_MODE_ value */
  LINK_CONFIG_GET_CDI = 22  /* link_config: query the wire mode; returns a CDI_ANSWER_ value */
};

enum {
  CDI_MODE_JTAG5 = 0, /* 5-wire JTAG */
  CDI_MODE_2WIRE = 1  /* 2-wire interface */
};

/* Results of LINK_CONFIG_GET_CDI and their names in messages. Any other result, even a negative
 * number, is named "jtag5". */
enum {
  CDI_ANSWER_JTAG5 = 0, /* "jtag5" */
  CDI_ANSWER_2WIRE = 1, /* "zeva-j2": each register has an extra byte, see link_jtag_insert */
  CDI_ANSWER_CJTAG2 = 2 /* "cjtag2" */
};

enum { LINK_RESET_TARGET = 1 };

/* The bit of each pin in out_value, *data and oe_mask of link_gpio_operator. */
enum {
  GPIO_PIN_NRST = 0x01,
  GPIO_PIN_TRST = 0x02,
  GPIO_PIN_TCK = 0x04,
  GPIO_PIN_TMS = 0x08,
  GPIO_PIN_TDI = 0x10,
  GPIO_PIN_TDO = 0x20,
  GPIO_PIN_ALL = 0x3F
};

/* Flags of link_gpio_operator. Each operation has one or more of them. */
enum {
  GPIO_FLAG_WRITE_OUT = 0x01, /* write the output levels */
  GPIO_FLAG_READ_IN = 0x02,   /* read the pins into the data word */
  GPIO_FLAG_WRITE_OE = 0x04,  /* write the output enables */
  GPIO_FLAG_START = 0x08,     /* first operation of a script */
  GPIO_FLAG_END = 0x10        /* last operation of a script */
};

enum {
  JTAG_IR_MAX_BYTES = 36, /* size of the IR array of link_jtag_insert */
  JTAG_DR_MAX_BYTES = 36, /* size of the DR array of link_jtag_insert */
  JTAG_CAPTURE_BYTES = 32 /* guaranteed size of the capture buffer of link_jtag_execute */
};

/* ---- Functions that the host provides ------------------------------------------------------- */

/*
 * Sets or queries the probe's wire mode.
 *
 *   code                  value            failure if the result is
 *   LINK_CONFIG_CDI_MODE  CDI_MODE_JTAG5   not zero
 *   LINK_CONFIG_CDI_MODE  CDI_MODE_2WIRE   negative
 *   LINK_CONFIG_GET_CDI   0                (never: the result is a CDI_ANSWER_ value)
 *
 * The plug-in queries the wire mode before every scan.
 */
int link_config(LinkHandle handle, int code, int value);

/*
 * Pulses the target's NRST, and returns when the target is ready for a scan. kind is
 * LINK_RESET_TARGET. The host keeps the wire mode, and chooses the pulse's length and its effect on
 * TRST and the TAP. A negative result means failure.
 */
int link_reset(LinkHandle handle, int kind);

/*
 * Receives one scan: ir_bits bits for Shift-IR, then dr_bits bits for Shift-DR (IEEE 1149.1). If
 * the result is not zero, the call has failed, and the plug-in does not call link_jtag_execute.
 *
 * ir and dr point to arrays of JTAG_IR_MAX_BYTES and JTAG_DR_MAX_BYTES bytes and are never null.
 * Bytes that the script does not list are zero. The host must not change the arrays, because after
 * link_jtag_execute the plug-in prints them as the values shifted in. The lengths come from the
 * script and are at most 288. They may be zero or negative. The host must not scan a register whose
 * length, without the extra byte described below, is 0 or less.
 *
 * If the last query answered CDI_ANSWER_2WIRE, each register has an extra byte at its least
 * significant end, and its length includes this byte (a length of -1 becomes 7). The byte is 0x00
 * in the IR. In the DR it is the read flag, 0x01 for a read and 0x00 for a write. This mode is for
 * registers of up to 32 bytes, 264 bits with the extra byte. In a longer register, the 33rd byte of
 * the script is lost, and each later byte is one place too low. The length can then be up to 296
 * bits, but the arrays end after 36 bytes: do not read beyond them.
 */
int link_jtag_insert(LinkHandle handle, int ir_bits, unsigned char* ir, int dr_bits,
                     unsigned char* dr);

/*
 * Runs the last inserted scan and stores the captured bits. A nonzero result means failure.
 *
 * capture points to JTAG_CAPTURE_BYTES or more bytes, which are zero when the call begins. The
 * plug-in reads the captured DR bits from byte 2 on (from byte 3 on after the answer
 * CDI_ANSWER_2WIRE) and no other byte. It does not mask them, so the host must leave the bits above
 * the last DR bit zero. The plug-in prints the captured bits after a read, and also after a write
 * if the answer was CDI_ANSWER_JTAG5. In this version, capture has 39 bytes or more: any DR fits.
 */
int link_jtag_execute(LinkHandle handle, unsigned char* capture);

/*
 * Executes one pin operation. A negative result means failure.
 *
 * In every operation, out_value and oe_mask contain the whole pin state of the script. The first
 * operation, with GPIO_FLAG_START, contains the initial state: all pins enabled, all levels low. In
 * later operations the host writes out_value or oe_mask to the pins only if the flag for it is set.
 *
 *   out_value  output levels, GPIO_PIN_ bits; GPIO_OUT in a script may set higher bits, too
 *   data       points to the operation's own word; never null. With GPIO_FLAG_READ_IN the host
 *              stores the pin levels here. The bits above GPIO_PIN_ALL must be 0 because the
 *              plug-in prints all 32 bits. The word is 0 before the operation first runs. When a
 *              repeat block runs the operation again, the word still contains the old value. If it
 *              is 0 after a read, the plug-in reports a failed read, and the script continues.
 *   oe_mask    output enables, GPIO_PIN_ bits
 *   flags      GPIO_FLAG_ bits
 */
int link_gpio_operator(LinkHandle handle, int out_value, uint32_t* data, int oe_mask, int flags);

/* ---- The function that the plug-in provides ------------------------------------------------- */

/*
 * Runs the script at path to its end or to the first host call that fails.
 *
 *   handle    passed to the link_ functions; may be null
 *   path      NUL-terminated, not modified; null is a failure
 *   callback  receives every message; if null, messages are dropped and nothing else changes
 *
 * Returns -1 if path is null, if the file cannot be opened, if anything in a GPIO script is wrong
 * (the script then has not run at all), or if a host call failed. Returns 0 otherwise.
 *
 * A wrong JTAG script still runs as far as the plug-in understands it, and the result is 0 if all
 * calls succeed. The plug-in reports these problems only to the user:
 *  - a line that is neither a section header nor KEY=VALUE: it prints a message and runs nothing;
 *  - a section in which IR or DR is missing or empty: it prints a message (which may be empty) and
 *    runs neither this section nor any later section;
 *  - a section that is wrong in another way: it prints "<section> syntax error" to the standard
 *    output of the process, not through the callback, and still runs the later sections.
 */
int ImplementScr(LinkHandle handle, char* path, PrintCallback callback);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif /* ICESCRIPT_ENTRY_ICESCRIPT_H_ */
