// A chain, for people.
#ifndef ICESCRIPT_HOST_CHAIN_CHAIN_REPORT_H_
#define ICESCRIPT_HOST_CHAIN_CHAIN_REPORT_H_

#include <string>

#include "host/chain/chain.h"
#include "host/chain/manufacturers.h"

namespace icehost {

// Its TAPs and what is to know of them, a line for each, its faults left out. `where` says on what.
// The text is printable.
std::string ReportOf(const Chain& chain, const std::string& where,
                     const Manufacturers& manufacturers);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHAIN_CHAIN_REPORT_H_
