// The chain behind an adapter that OpenOCD drives.
#ifndef ICESCRIPT_HOST_CHAIN_OPENOCD_CHAIN_H_
#define ICESCRIPT_HOST_CHAIN_OPENOCD_CHAIN_H_

#include <string>

#include "host/chain/chain.h"
#include "host/probe/openocd_rpc.h"

namespace icehost {

// Has OpenOCD examine its chain anew, which resets the TAPs and not the target. IDCODEs were read
// then; IR lengths are those that OpenOCD was told or has found when it started. Throws as
// OpenocdRpc.
Chain ReadOpenocdChain(OpenocdRpc& rpc);

// The same of what OpenOCD said meanwhile (a line for each thing) and of its table behind that.
Chain OpenocdChain(const std::string& said, const std::string& table);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHAIN_OPENOCD_CHAIN_H_
