// The wires between a probe and its target.
#ifndef ICESCRIPT_HOST_TARGET_WIRES_H_
#define ICESCRIPT_HOST_TARGET_WIRES_H_

#include "entry/icescript.h"

namespace icehost {

// The names of the pins, in the order of the GPIO_PIN_ bits.
constexpr const char* kPinNames[] = {"NRST", "TRST", "TCK", "TMS", "TDI", "TDO"};
constexpr int kPinCount = 6;

constexpr int kResetPins = GPIO_PIN_NRST | GPIO_PIN_TRST;
// The pins that a probe drives in a scan.
constexpr int kDrivenPins = GPIO_PIN_ALL & ~GPIO_PIN_TDO;

// Returns the levels of the wires (GPIO_PIN_ bits). Pins that are not in `enables` float high.
constexpr int WireLevels(int levels, int enables) {
  return (levels | ~enables) & GPIO_PIN_ALL;
}

// The longest register, in bits, that can be scanned over two wires. The interface adds a byte,
// which displaces the 33rd byte of a longer register.
constexpr int kMostTwoWireBits = 256;

// The names of the wire modes, indexed by CDI_ANSWER_.
constexpr const char* kInterfaceNames[] = {"jtag5", "2wire", "cjtag2"};
constexpr int kInterfaces = 3;

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TARGET_WIRES_H_
