// Reads a chain off the pins of a probe.
#ifndef ICESCRIPT_HOST_CHAIN_CHAIN_READER_H_
#define ICESCRIPT_HOST_CHAIN_CHAIN_READER_H_

#include "host/chain/chain.h"
#include "host/probe/pin_port.h"

namespace icehost {

// Resets the TAPs by TMS, NRST and TRST staying high, reads what they answer, loads BYPASS and no
// other instruction, and leaves them in Test-Logic-Reset. Each reading is done twice, and what
// differs is a fault. Throws what the port throws.
Chain ReadChain(PinPort& port);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHAIN_CHAIN_READER_H_
