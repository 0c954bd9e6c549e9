#include "host/tables/protocols.h"

#include <fmt/format.h>

#include <stdexcept>

#include "host/probe/bitbang_session.h"
#include "host/probe/xvc_session.h"

namespace icehost {
namespace {

template <class Kind>
std::unique_ptr<Session> OpenSession(PinPort& port) {
  return std::make_unique<Kind>(port);
}

// Returns the names of all protocols, with `mark` after the first name.
std::string ProtocolNames(const std::string& mark) {
  std::string names;
  for (const ProtocolKind& kind : ProtocolKinds()) {
    names += names.empty() ? kind.name + mark : fmt::format(" or {}", kind.name);
  }
  return names;
}

}  // namespace

const std::vector<ProtocolKind>& ProtocolKinds() {
  static const std::vector<ProtocolKind> kinds = {
      {"remote-bitbang", "remote_bitbang", OpenSession<BitbangSession>},
      {"xvc", "XVC", OpenSession<XvcSession>},
  };
  return kinds;
}

const ProtocolKind& ParseProtocol(const std::string& name) {
  for (const ProtocolKind& kind : ProtocolKinds()) {
    if (name == kind.name) return kind;
  }
  throw std::invalid_argument("expected " + ProtocolNames(""));
}

std::string ProtocolHelp() {
  return "The protocol of the clients: " + ProtocolNames(" (the default)");
}

}  // namespace icehost
