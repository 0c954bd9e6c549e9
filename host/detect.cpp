#include <cstddef>
#include <optional>
#include <string>

#include "host/chain/chain.h"
#include "host/system/errors.h"
#include "host/system/file_uses.h"
#include "host/system/output_file.h"
#include "host/system/standard_streams.h"
#include "host/tables/outputs.h"
#include "host/verbs.h"

namespace icehost {
namespace {

void Write(const std::string& text) {
  OutputFile("-", OutputFile::Rest::kLines).WriteWhole(text);
}

void WriteScript(const DetectCommand& command, const Chain& chain) {
  if (command.script == ScriptKind::kGpio) return Write(GpioScriptOf(chain));
  std::optional<std::size_t> tap;  // no value means the whole chain
  const auto only_tap = command.probe.kind->only_tap;
  if (only_tap != nullptr) tap = only_tap(chain, command.probe);
  Write(JtagScriptOf(chain, tap));
}

ExitStatus Tell(const DetectCommand& command, const Chain& chain) {
  if (!command.quiet && !chain.taps.empty()) {
    const std::string report = ReportOf(chain, command.probe.Name());
    if (command.script.has_value()) {
      StandardError() << report;
    } else {
      Write(report);
    }
  }
  for (const std::string& fault : chain.faults) Complain(fault);
  if (!chain.faults.empty()) return kScriptFailed;
  if (command.script.has_value()) WriteScript(command, chain);
  return kAllWell;
}

ExitStatus Detect(const DetectCommand& command) try {
  const Outputs log({}, &OutputKind::run, command.probe, FileUses());
  const Chain chain = command.probe.kind->read_chain(command.probe);
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
  return kNotOpened;  // the probe cannot report its chain
}

}  // namespace

ExitStatus Execute(const DetectCommand& command) {
  return EndSpawned(command.probe, Detect(command));
}

}  // namespace icehost
