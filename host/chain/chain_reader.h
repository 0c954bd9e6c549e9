// Reads a chain from the pins of a probe, or from OpenOCD.
#ifndef ICESCRIPT_HOST_CHAIN_CHAIN_READER_H_
#define ICESCRIPT_HOST_CHAIN_CHAIN_READER_H_

#include <string>

#include "host/chain/chain.h"
#include "host/probe/openocd.h"
#include "host/probe/pin_port.h"

namespace icehost {

// Resets the TAPs by TMS, with NRST and TRST high, and reads the chain. Loads no instruction except
// BYPASS, and leaves the TAPs in Test-Logic-Reset. Reads everything twice, and adds a fault if the
// results differ. Throws the exceptions of the port.
Chain ReadChain(PinPort& port);

// Makes OpenOCD examine its chain again. This resets the TAPs, but not the target. Returns the
// IDCODEs read, and the IR lengths that OpenOCD was configured with or found when it started.
// Throws as OpenocdRpc::Ask does, and IoError if OpenOCD cannot examine the chain.
Chain ReadOpenocdChain(OpenocdRpc& rpc);

// Returns the chain that OpenOCD describes: `said` contains the lines that OpenOCD printed while it
// examined the chain, and `table` contains its later answer to kAskScanChain.
Chain OpenocdChain(const std::string& said, const std::string& table);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHAIN_CHAIN_READER_H_
