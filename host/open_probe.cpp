#include "host/open_probe.h"

#include "host/probe/sim_port.h"
#include "host/system/socket.h"

namespace icehost {
namespace {

Socket Connect(const ProbeOptions& options) {
  return Socket::Connect(options.choice.endpoint, options.timeout);
}

}  // namespace

std::unique_ptr<PinPort> OpenPins(const ProbeOptions& options, BitbangPort::Manner manner) {
  switch (options.choice.kind) {
    case ProbeChoice::Kind::kSim:
      return std::make_unique<SimPort>(options.target);
    case ProbeChoice::Kind::kBitbang:
      return std::make_unique<BitbangPort>(Connect(options), manner);
    case ProbeChoice::Kind::kOpenocd:
      break;
  }
  return nullptr;
}

std::unique_ptr<OpenocdProbe> OpenOpenocd(const ProbeOptions& options) {
  return std::make_unique<OpenocdProbe>(Connect(options), options.choice.tap);
}

OpenocdRpc OpenRpc(const ProbeOptions& options) {
  return OpenocdRpc(Connect(options));
}

}  // namespace icehost
