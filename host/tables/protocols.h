// The protocols of serve --protocol. To add one, write its Session and a row in protocols.cpp.
#ifndef ICESCRIPT_HOST_TABLES_PROTOCOLS_H_
#define ICESCRIPT_HOST_TABLES_PROTOCOLS_H_

#include <memory>
#include <string>
#include <vector>

#include "host/probe/pin_port.h"
#include "host/probe/session.h"

namespace icehost {

struct ProtocolKind {
  const char* name;   // the value of --protocol
  const char* title;  // the name of the protocol in messages
  // Returns a session that plays on `port`, which must outlive it.
  std::unique_ptr<Session> (*open)(PinPort& port);
};

// Returns the rows of the table. The first one is the default.
const std::vector<ProtocolKind>& ProtocolKinds();

// Returns the row with this name. Throws std::invalid_argument, which says what is expected.
const ProtocolKind& ParseProtocol(const std::string& name);
std::string ProtocolHelp();

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TABLES_PROTOCOLS_H_
