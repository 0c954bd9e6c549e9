// The names of the pins, lowest bit first.
#ifndef ICESCRIPT_HOST_PIN_NAMES_H_
#define ICESCRIPT_HOST_PIN_NAMES_H_

namespace icehost {

constexpr const char* kPinNames[] = {"NRST", "TRST", "TCK", "TMS", "TDI", "TDO"};
constexpr int kPins = 6;

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PIN_NAMES_H_
