// XVC 1.0, a virtual cable for JTAG: what its client and its server send over TCP.
#ifndef ICESCRIPT_HOST_PROBE_XVC_H_
#define ICESCRIPT_HOST_PROBE_XVC_H_

#include <string_view>

namespace icehost {

// A client sends a command, and the next one after the answer. N is in decimal. The other numbers
// have 4 bytes, and the lowest comes first.
//
// | Command                     | Answer                                                     |
// |-----------------------------|------------------------------------------------------------|
// | getinfo:                    | xvcServer_v1.0:N\n, the bytes of TMS and TDI that a shift  |
// |                             | may have together                                          |
// | settck: and a period in ns  | the period that was set, a number                          |
// | shift: and a number of bits,| TDO, which the server samples before each rising edge of   |
// | the bytes of TMS, of TDI    | TCK                                                        |
//
// The lowest bit of the first byte is the first to be shifted.
constexpr std::string_view kXvcGetInfo = "getinfo:";
constexpr std::string_view kXvcSetTck = "settck:";
constexpr std::string_view kXvcShift = "shift:";
constexpr std::string_view kXvcInfo = "xvcServer_v1.0:";
constexpr int kXvcNumberBytes = 4;

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_XVC_H_
