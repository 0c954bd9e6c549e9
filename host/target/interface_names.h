// The names of the wire modes, by CDI_ANSWER_.
#ifndef ICESCRIPT_HOST_TARGET_INTERFACE_NAMES_H_
#define ICESCRIPT_HOST_TARGET_INTERFACE_NAMES_H_

namespace icehost {

constexpr const char* kInterfaceNames[] = {"jtag5", "2wire", "cjtag2"};
constexpr int kInterfaces = 3;

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TARGET_INTERFACE_NAMES_H_
