// The beginnings of scripts for a chain.
#ifndef ICESCRIPT_HOST_CHAIN_CHAIN_SCRIPT_H_
#define ICESCRIPT_HOST_CHAIN_CHAIN_SCRIPT_H_

#include <cstddef>
#include <optional>
#include <string>

#include "host/chain/chain.h"

namespace icehost {

// A JTAG script that passes on this sound chain: it shifts through BYPASS, whose instruction is the
// same everywhere. For each IDCODE it holds a section that is commented out, since no standard says
// which instruction selects it. Throws Unsupported where the IR is longer than a script's may be,
// or the chain longer than kMostTaps.
// `only` is the one TAP that a scan of the probe reaches: OpenOCD keeps the others in BYPASS.
std::string JtagScriptOf(const Chain& chain, std::optional<std::size_t> only);

// A GPIO script that passes on this sound chain: it resets the TAPs and reads their IDCODEs, but
// for the versions, bit by bit.
std::string GpioScriptOf(const Chain& chain);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHAIN_CHAIN_SCRIPT_H_
