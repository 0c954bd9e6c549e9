// The probe that the user chose.
#ifndef ICESCRIPT_HOST_OPEN_PROBE_H_
#define ICESCRIPT_HOST_OPEN_PROBE_H_

#include <memory>

#include "host/options/commands.h"
#include "host/probe/bitbang_port.h"
#include "host/probe/openocd.h"
#include "host/probe/pin_port.h"

namespace icehost {

// Its pins; null where it does not show them. Connects where the probe is across a network; throws
// IoError.
std::unique_ptr<PinPort> OpenPins(const ProbeOptions& options,
                                  BitbangPort::Manner manner = BitbangPort::Manner::kProbe);
// The one that does not. Throws likewise.
std::unique_ptr<OpenocdProbe> OpenOpenocd(const ProbeOptions& options);
// What that one says itself. Throws likewise.
OpenocdRpc OpenRpc(const ProbeOptions& options);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OPEN_PROBE_H_
