// The names of the pins, lowest bit first.
#ifndef ICESCRIPT_HOST_TARGET_PIN_NAMES_H_
#define ICESCRIPT_HOST_TARGET_PIN_NAMES_H_

#include "entry/icescript.h"

namespace icehost {

constexpr const char* kPinNames[] = {"NRST", "TRST", "TCK", "TMS", "TDI", "TDO"};
constexpr int kPins = 6;

// The pins that a probe drives in a scan; TDO is the target's.
constexpr int kDrivenPins = GPIO_PIN_ALL & ~GPIO_PIN_TDO;

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TARGET_PIN_NAMES_H_
