#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "host/chain/chain.h"
#include "host/chain/chain_reader.h"
#include "host/open_probe.h"
#include "host/system/errors.h"
#include "host/system/output_file.h"
#include "host/system/standard_streams.h"
#include "host/verbs.h"

namespace icehost {
namespace {

std::string NameOf(const ProbeChoice& choice) {
  switch (choice.kind) {
    case ProbeChoice::Kind::kSim:
      return "the simulated probe";
    case ProbeChoice::Kind::kBitbang:
      return "remote-bitbang:" + choice.endpoint.Name();
    case ProbeChoice::Kind::kOpenocd:
      break;
  }
  return "openocd:" + choice.endpoint.Name();
}

std::vector<std::string> NamesOf(const Chain& chain) {
  std::vector<std::string> names;
  for (const ChainTap& tap : chain.taps) names.push_back(tap.name);
  return names;
}

Chain ReadChainOf(const ProbeOptions& probe) {
  if (const auto port = OpenPins(probe)) return ReadChain(*port);
  OpenocdRpc rpc = OpenRpc(probe);
  Chain chain = ReadOpenocdChain(rpc);
  if (!probe.choice.tap.empty()) RefuseUnknownTap(NamesOf(chain), probe.choice.tap);
  return chain;
}

// The one TAP that OpenOCD scans for a script; through pins it is the whole chain.
std::optional<std::size_t> OnlyTap(const Chain& chain, const ProbeChoice& choice) {
  if (choice.kind != ProbeChoice::Kind::kOpenocd) return std::nullopt;
  const std::vector<std::string> names = NamesOf(chain);
  if (choice.tap.empty() && names.size() > 1) {
    throw Unsupported(
        fmt::format("no script: OpenOCD has several TAPs, name one: {}", fmt::join(names, ", ")));
  }
  if (choice.tap.empty()) return 0;
  return static_cast<std::size_t>(std::find(names.begin(), names.end(), choice.tap) -
                                  names.begin());
}

void Write(const std::string& text) {
  OutputFile output("-", OutputFile::Rest::kLines);
  output.Begin();
  output.Stream() << text;
  output.Close();
}

void WriteScript(const DetectCommand& command, const Chain& chain) {
  Write(command.script == ScriptKind::kGpio
            ? GpioScriptOf(chain)
            : JtagScriptOf(chain, OnlyTap(chain, command.probe.choice)));
}

ExitStatus Tell(const DetectCommand& command, const Chain& chain) {
  if (!command.quiet && !chain.taps.empty()) {
    const std::string report = ReportOf(chain, NameOf(command.probe.choice));
    if (command.script.has_value()) {
      std::fputs(report.c_str(), stderr);
    } else {
      Write(report);
    }
  }
  for (const std::string& fault : chain.faults) Complain(fault);
  if (!chain.faults.empty()) return kScriptFailed;
  if (command.script.has_value()) WriteScript(command, chain);
  return kAllWell;
}

}  // namespace

ExitStatus Execute(const DetectCommand& command) try {
  const Chain chain = ReadChainOf(command.probe);
  try {
    return Tell(command, chain);
  } catch (const Unsupported& error) {
    Complain(error.what());
    return kScriptFailed;
  }
} catch (const IoError& error) {
  Complain(error.what());
  return kNotOpened;
} catch (const Unsupported& error) {
  Complain(error.what());
  return kNotOpened;  // the probe says nothing of its chain
}

}  // namespace icehost
