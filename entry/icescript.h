/*
 * icescript: the interface between the script-execution plug-in, libicescript.so, and the debug
 * server (the host) that loads it. C11 and C++11 or later.
 *
 * Conventions, for everything below:
 *
 *  1. Loading. The plug-in exports ImplementScr, found by dlsym under that name, and imports the
 *     five link_ functions by theirs. The host process must export all five (an executable: link it
 *     with -rdynamic or an export list); they are bound when the plug-in is loaded, and dlopen
 *     fails if one is missing.
 *  2. Threads. Everything happens on the thread that called ImplementScr, one call at a time, in
 *     script order. The plug-in starts no thread and takes no lock, and the number of the next pin
 *     read is plain state of the loaded plug-in: never run two scripts at the same time.
 *  3. Pointers. A pointer handed to the host is valid until that host function returns, the arrays
 *     of link_jtag_insert until the link_jtag_execute after it does. The plug-in keeps none of the
 *     host's after ImplementScr returns.
 *  4. Bits. Scan data travels as bytes, least significant first: byte 0 holds bits 0 to 7, of which
 *     bit 0 is the first to be shifted. n bits take (n + 7) / 8 bytes.
 *  5. Results. Each link_ function is judged by its own test, stated there; the tests differ on
 *     purpose. A failed call is not retried and ends the script: a GPIO script with a message, a
 *     JTAG script without one, so that the host has to say what went wrong.
 *  6. Exceptions. The plug-in throws none of its own and keeps none: what the standard library
 *     catches inside, it throws on. One thrown by a host function, by the callback or by the
 *     standard library (no memory) passes through ImplementScr to the host after everything that
 *     the call allocated has been freed. That takes one unwinder in the process, as a rule the
 *     shared libgcc_s: in a host that keeps a static one to itself (g++ -static-libgcc
 *     -static-libstdc++ with an export list; with -rdynamic the plug-in uses the host's) any
 *     exception that meets the plug-in aborts the process.
 *  7. Messages are for the user to read: NUL-terminated, at most 1023 bytes, in English but for
 *     what they quote of the script and its path. They end in a line break only where their text
 *     does, a line may arrive in pieces, and a message may be empty. Show each as it stands and add
 *     nothing.
 *  8. Stability. Names, arguments, codes, bounds and the tests of results stay within version 1.x:
 *     a host built with this header runs with every later plug-in of 1.x as it is.
 */
#ifndef ICESCRIPT_ENTRY_ICESCRIPT_H_
#define ICESCRIPT_ENTRY_ICESCRIPT_H_

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* The host's own handle, passed through unchanged to every link_ function, never examined. */
typedef void* LinkHandle;

/*
 * Shows one message. The result is not examined. It gets no handle: what it needs, the host keeps
 * in a static variable, or in a thread-local one, for it is called on the thread of ImplementScr.
 */
typedef int (*PrintCallback)(const char* message);

/* ---- Codes that the plug-in passes --------------------------------------------------------- */

enum {
  LINK_CONFIG_CDI_MODE = 3, /* link_config: set the wire mode to a CDI_MODE_ value */
  LINK_CONFIG_GET_CDI = 22  /* link_config: query the wire mode; the answer is a CDI_ANSWER_ */
};

enum {
  CDI_MODE_JTAG5 = 0, /* 5-wire JTAG */
  CDI_MODE_2WIRE = 1  /* 2-wire interface */
};

/* Answers to LINK_CONFIG_GET_CDI. Any other answer, negative ones too, is called "jtag5" as well.
 */
enum {
  CDI_ANSWER_JTAG5 = 0, /* "jtag5" */
  CDI_ANSWER_2WIRE = 1, /* "zeva-j2": scans carry an extra byte, see link_jtag_insert */
  CDI_ANSWER_CJTAG2 = 2 /* "cjtag2" */
};

enum { LINK_RESET_TARGET = 1 };

/* Pin bits of the output levels, the output enables and the data word of link_gpio_operator. */
enum {
  GPIO_PIN_NRST = 0x01,
  GPIO_PIN_TRST = 0x02,
  GPIO_PIN_TCK = 0x04,
  GPIO_PIN_TMS = 0x08,
  GPIO_PIN_TDI = 0x10,
  GPIO_PIN_TDO = 0x20,
  GPIO_PIN_ALL = 0x3F
};

/* Flags of link_gpio_operator: what one operation asks for, one or more. */
enum {
  GPIO_FLAG_WRITE_OUT = 0x01, /* write the output levels */
  GPIO_FLAG_READ_IN = 0x02,   /* read the pins into the data word */
  GPIO_FLAG_WRITE_OE = 0x04,  /* write the output enables */
  GPIO_FLAG_START = 0x08,     /* first operation of a script */
  GPIO_FLAG_END = 0x10        /* last operation of a script */
};

enum {
  JTAG_IR_MAX_BYTES = 36, /* size of the IR array of link_jtag_insert */
  JTAG_DR_MAX_BYTES = 36, /* size of its DR array */
  JTAG_CAPTURE_BYTES = 32 /* what a host may count on in the capture buffer of link_jtag_execute */
};

/* ---- Functions that the host provides ------------------------------------------------------- */

/*
 * Sets or queries the probe's wire mode.
 *
 *   code                  value            failure when the result is
 *   LINK_CONFIG_CDI_MODE  CDI_MODE_JTAG5   not zero
 *   LINK_CONFIG_CDI_MODE  CDI_MODE_2WIRE   negative
 *   LINK_CONFIG_GET_CDI   0                never: the result is the answer
 *
 * The query is made before every scan.
 */
int link_config(LinkHandle handle, int code, int value);

/*
 * Pulses the target's NRST; kind is LINK_RESET_TARGET. The wire mode stays. The length of the
 * pulse, TRST and the state of the TAP are the host's affair. Failure when the result is negative.
 */
int link_reset(LinkHandle handle, int kind);

/*
 * Hands over one scan: ir_bits bits for an IR scan, then dr_bits bits for a DR scan (IEEE 1149.1:
 * through Shift-IR, then through Shift-DR). Failure when the result is not zero; link_jtag_execute
 * is then not called.
 *
 * ir and dr are arrays of JTAG_IR_MAX_BYTES and JTAG_DR_MAX_BYTES bytes, never null, zero where the
 * script lists no byte. The host does not write to them: after link_jtag_execute the plug-in shows
 * them as what was shifted in. The lengths are the script's: up to 288, and zero or negative where
 * the script says so. A register of 0 bits or less, the extra byte not counted, is not scanned.
 *
 * After the answer CDI_ANSWER_2WIRE each register carries one more byte at its least significant
 * end, counted in its length (-1 bit arrives as 7): 0x00 in the IR, the read flag (0x01 read, 0x00
 * write) in the DR. This mode is made for registers of up to 32 bytes, 264 bits with that one. A
 * script that gives more still gets here, its 33rd byte lost, its 34th where the 33rd should be and
 * so on, and its length up to 296 bits: a host must not read more than the 36 bytes of an array.
 */
int link_jtag_insert(LinkHandle handle, int ir_bits, unsigned char* ir, int dr_bits,
                     unsigned char* dr);

/*
 * Runs the scan of the link_jtag_insert before it and stores what was captured. Failure when the
 * result is not zero.
 *
 * capture has JTAG_CAPTURE_BYTES bytes, all zero at the call. The plug-in takes the DR bits shifted
 * out from byte 2 on, or from byte 3 on after the answer CDI_ANSWER_2WIRE, and looks at no other
 * byte. It does not mask them: the host leaves the bits above the last one zero. It shows them
 * after a read, and after a write too where the answer was CDI_ANSWER_JTAG5.
 * (This version's buffer also takes the longest DR whole, 36 bytes from byte 3.)
 */
int link_jtag_execute(LinkHandle handle, unsigned char* capture);

/*
 * One pin operation. Failure when the result is negative.
 *
 * out_value and oe_mask carry the script's state in every operation. GPIO_FLAG_START comes with the
 * state that a script starts from, all pins enabled and all levels low; after it, each is to be
 * written to the pins only with its own flag.
 *
 *   out_value  output levels, GPIO_PIN_ bits; a script's GPIO_OUT may set bits above them
 *   data       the operation's own word, never null: with GPIO_FLAG_READ_IN the host stores the
 *              levels read here, and 0 above GPIO_PIN_ALL: all 32 bits are shown. It is 0 before
 *              the first run of the operation; in a repeat block it holds what the run before left.
 *              The value 0 after a read counts, for the user, as a read that failed; the script
 *              goes on.
 *   oe_mask    output enables, same bits
 *   flags      GPIO_FLAG_ bits
 */
int link_gpio_operator(LinkHandle handle, int out_value, uint32_t* data, int oe_mask, int flags);

/* ---- The function that the plug-in provides ------------------------------------------------- */

/*
 * Runs the script at path to its end or to the first failing host call.
 *
 *   handle    passed on to the link_ functions; may be null
 *   path      NUL-terminated, not modified; null is a failure
 *   callback  receives every message; null: nothing is printed, all else is the same
 *
 * Returns 0 or -1, nothing else. -1: no path, a file that cannot be opened, anything wrong in a
 * GPIO script (then nothing of it has run), or a host call that failed.
 *
 * A JTAG script that is not understood is run as far as it is, and its result is 0 when all that
 * succeeds; the user is told, but not the host:
 *  - a line that is neither a section header nor KEY=VALUE: a message, and nothing runs;
 *  - a section without IR or DR, or with an empty one: a message (at times the empty one), and
 *    neither it nor any section after it runs;
 *  - a section that is wrong in another way: "<section> syntax error" on the process's standard
 *    output, not through the callback, and the sections after it run.
 */
int ImplementScr(LinkHandle handle, char* path, PrintCallback callback);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif /* ICESCRIPT_ENTRY_ICESCRIPT_H_ */
