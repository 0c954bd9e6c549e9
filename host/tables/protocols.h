// The protocols that serve --protocol chooses from. A new one is its Session, and a row in
// protocols.cpp.
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
  const char* title;  // in messages
  // Returns a session on the pins, which must outlive it.
  std::unique_ptr<Session> (*open)(PinPort& port);
};

// Returns all rows. The first is the default.
const std::vector<ProtocolKind>& ProtocolKinds();

// Returns the row of that name; throws std::invalid_argument that says what is expected.
const ProtocolKind& ParseProtocol(const std::string& name);
// The help text of --protocol.
std::string ProtocolHelp();

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TABLES_PROTOCOLS_H_
