#include "host/tables/probes.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "host/chain/chain_reader.h"
#include "host/probe/bitbang_port.h"
#include "host/probe/openocd.h"
#include "host/probe/sim_port.h"
#include "host/probe/xvc_port.h"
#include "host/system/errors.h"
#include "host/system/interrupt.h"
#include "host/system/socket.h"

namespace icehost {
namespace {

using Texts = std::vector<std::string>;

constexpr std::size_t kHelpWidth = 72;
constexpr std::chrono::milliseconds kTryAgainAfter{20};

std::string DescribePlace(const ChainPlace& place) {
  if (place.ir_lengths.size() < 2) return "";
  return fmt::format(", TAP {} of --chain {}", place.tap + 1, fmt::join(place.ir_lengths, ","));
}

std::string DescribeAddress(const ProbeOptions& options) {
  return fmt::format("{} at {}{}{}{}", options.kind->title, options.endpoint.Name(),
                     options.tap.empty() ? "" : ", ", options.tap, DescribePlace(options.place));
}

// Starts the server and returns the first connection, because the server may accept only one.
// Throws if another server already uses the endpoint, since the scripts would then run there.
Socket ConnectToSpawned(const ProbeOptions& options) {
  const std::string name = options.endpoint.Name();
  if (Socket::IsTaken(options.endpoint, options.timeout)) {
    throw IoError(name +
                  ": a server is already running there, so the --spawn command was not started");
  }
  options.spawned->Start();
  const auto end = std::chrono::steady_clock::now() + options.timeout;
  return Socket::Connect(options.endpoint, options.timeout, [&] {
    ThrowIfInterrupted();
    if (options.spawned->HasEnded())
      throw IoError(name + ": cannot connect: the spawned server has ended");
    if (std::chrono::steady_clock::now() >= end) {
      throw IoError(fmt::format("{}: no server accepted a connection within {} ms", name,
                                options.timeout.count()));
    }
    std::this_thread::sleep_for(kTryAgainAfter);
  });
}

Socket Connect(const ProbeOptions& options) {
  if (options.spawned != nullptr) return ConnectToSpawned(options);
  return Socket::Connect(options.endpoint, options.timeout);
}

Chain ReadPins(const ProbeOptions& options) {
  return ReadChain(*options.kind->open_pins(options));
}

std::string DescribeTarget(const ProbeOptions& options) {
  return fmt::format("simulated, target with an IR of {} bits and IDCODE 0x{:08x}{}",
                     options.target.ir_length, options.target.idcode, DescribePlace(options.place));
}

std::unique_ptr<PinPort> OpenSim(const ProbeOptions& options) {
  return std::make_unique<SimPort>(options.target, options.place);
}

ProbeKind Sim() {
  ProbeKind row;
  row.name = "sim";
  row.title = "the simulated probe";
  row.has_target = true;
  row.two_wire = true;
  row.describe = DescribeTarget;
  row.open_pins = OpenSim;
  row.read_chain = ReadPins;
  return row;
}

void ParseServer(const std::string& address, ProbeOptions& options) {
  options.endpoint = ParseEndpoint(address);
}

template <BitbangPort::Manner manner>
std::unique_ptr<PinPort> OpenBitbang(const ProbeOptions& options) {
  return std::make_unique<BitbangPort>(Connect(options), manner);
}

ProbeKind RemoteBitbang() {
  ProbeKind row;
  row.name = "remote-bitbang";
  row.addresses = {"HOST:PORT", "unix:PATH"};
  row.title = "remote_bitbang";
  row.parse = ParseServer;
  row.describe = DescribeAddress;
  row.open_pins = OpenBitbang<BitbangPort::Manner::kProbe>;
  row.open_served = OpenBitbang<BitbangPort::Manner::kProxy>;
  row.read_chain = ReadPins;
  return row;
}

// Reads HOST:PORT[:TAP]. An IPv6 address, which contains colons, must be in brackets.
void ParseServerAndTap(const std::string& address, ProbeOptions& options) {
  const auto after = [&address](char mark, std::size_t from) {
    return std::min(address.find(mark, std::min(from, address.size())), address.size());
  };
  const std::size_t host_end = address.substr(0, 1) == "[" ? after(']', 0) : 0;
  const std::size_t port_end = after(':', after(':', host_end) + 1);
  options.endpoint = ParseEndpoint(address.substr(0, port_end));
  options.tap = address.substr(std::min(port_end + 1, address.size()));
}

Texts TapsOf(const Chain& chain) {
  Texts names;
  for (const ChainTap& tap : chain.taps) names.push_back(tap.name);
  return names;
}

std::unique_ptr<Probe> OpenOpenocd(const ProbeOptions& options) {
  return std::make_unique<OpenocdProbe>(Connect(options), options.tap);
}

Chain ReadOpenocd(const ProbeOptions& options) {
  OpenocdRpc rpc(Connect(options));
  Chain chain = ReadOpenocdChain(rpc);
  if (!options.tap.empty() && chain.faults.empty()) RefuseUnknownTap(TapsOf(chain), options.tap);
  return chain;
}

std::size_t OnlyTap(const Chain& chain, const ProbeOptions& options) {
  const Texts names = TapsOf(chain);
  if (options.tap.empty() && names.size() > 1) {
    throw Unsupported(fmt::format(
        "cannot write a script, because OpenOCD has several TAPs: name one in --probe ({})",
        fmt::join(names, ", ")));
  }
  if (options.tap.empty()) return 0;
  return static_cast<std::size_t>(std::find(names.begin(), names.end(), options.tap) -
                                  names.begin());
}

ProbeKind Openocd() {
  ProbeKind row;
  row.name = "openocd";
  row.addresses = {"HOST:PORT[:TAP]"};
  row.title = "OpenOCD";
  row.parse = ParseServerAndTap;
  row.describe = DescribeAddress;
  row.open_scans = OpenOpenocd;
  row.read_chain = ReadOpenocd;
  row.only_tap = OnlyTap;
  return row;
}

std::unique_ptr<Probe> OpenXvc(const ProbeOptions& options) {
  return std::make_unique<XvcProbe>(Connect(options));
}

Chain ReadXvc(const ProbeOptions& options) {
  XvcPort port(Connect(options));
  return ReadChain(port);
}

ProbeKind Xvc() {
  ProbeKind row;
  row.name = "xvc";
  row.addresses = {"HOST:PORT"};
  row.title = "XVC";
  row.parse = ParseServer;
  row.describe = DescribeAddress;
  row.open_scans = OpenXvc;
  row.read_chain = ReadXvc;
  return row;
}

void AppendForms(const ProbeKind& kind, Texts& forms) {
  if (kind.addresses.empty()) forms.emplace_back(kind.name);
  for (const std::string& address : kind.addresses) {
    forms.push_back(fmt::format("{}:{}", kind.name, address));
  }
}

Texts AllForms() {
  Texts forms;
  for (const ProbeKind& kind : ProbeKinds()) AppendForms(kind, forms);
  return forms;
}

// Returns "a, b or c", in lines of up to `width` columns.
std::string Listed(const Texts& items, std::size_t width) {
  std::string text;
  std::size_t line = 0;
  for (std::size_t i = 0; i < items.size(); ++i) {
    const std::size_t left = items.size() - i - 1;
    const std::string item = (left == 0 && i > 0 ? "or " : "") + items[i] + (left > 1 ? "," : "");
    const bool fits = text.size() - line + item.size() < width;
    if (i > 0) text += fits ? ' ' : '\n';
    if (!fits) line = text.size();
    text += item;
  }
  return text;
}

}  // namespace

const std::vector<ProbeKind>& ProbeKinds() {
  static const std::vector<ProbeKind> kinds = {Sim(), RemoteBitbang(), Xvc(), Openocd()};
  return kinds;
}

std::string ProbeOptions::Name() const {
  if (kind->addresses.empty()) return kind->title;
  return fmt::format("{}:{}", kind->name, endpoint.Name());
}

void ParseProbe(const std::string& text, ProbeOptions& options) {
  const std::size_t colon = std::min(text.find(':'), text.size());
  for (const ProbeKind& kind : ProbeKinds()) {
    const bool takes_address = !kind.addresses.empty();
    if (text.substr(0, colon) != kind.name || takes_address != (colon < text.size())) continue;
    options.kind = &kind;
    if (takes_address) kind.parse(text.substr(colon + 1), options);
    return;
  }
  throw std::invalid_argument("expected " + Listed(AllForms(), std::string::npos));
}

std::string ProbeHelp() {
  Texts forms = AllForms();
  forms.front() += " (the default)";
  return Listed(forms, kHelpWidth);
}

std::string ServedProbeHelp() {
  const ProbeKind& first = ProbeKinds().front();
  Texts others;
  for (const ProbeKind& kind : ProbeKinds()) {
    if (kind.ShowsPins() && &kind != &first) AppendForms(kind, others);
  }
  return fmt::format("The probe to serve: {} (the default), or another server to forward to:\n{}",
                     first.name, Listed(others, kHelpWidth));
}

}  // namespace icehost
