// The commands and answers of XVC 1.0, a protocol for JTAG over TCP.
#ifndef ICESCRIPT_HOST_PROBE_XVC_H_
#define ICESCRIPT_HOST_PROBE_XVC_H_

#include <string_view>

namespace icehost {

// A client sends a command only after the answer to the previous one. N is decimal. Other numbers
// have 4 bytes, the lowest first. The lowest bit of the first byte is shifted first.
//
// | Command                     | Answer                                                     |
// |-----------------------------|------------------------------------------------------------|
// | getinfo:                    | xvcServer_v1.0:N\n, where N is the largest number of bytes |
// |                             | in a shift, TMS and TDI together                           |
// | settck: and a period in ns  | the period that was set, a number                          |
// | shift: and a number of bits,| TDO, which the server samples before each rising edge of   |
// | bytes of TMS, bytes of TDI  | TCK                                                        |
constexpr std::string_view kXvcGetInfo = "getinfo:";
constexpr std::string_view kXvcSetTck = "settck:";
constexpr std::string_view kXvcShift = "shift:";
constexpr std::string_view kXvcInfo = "xvcServer_v1.0:";
constexpr int kXvcNumberBytes = 4;

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_XVC_H_
