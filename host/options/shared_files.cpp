#include "host/options/shared_files.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host/system/file_identity.h"

namespace icehost {
namespace {

constexpr const char* kScript = "a script";

struct Use {
  std::string identity;
  std::string what;
};

struct Output {
  const char* option;
  const std::string& path;
};

using Outputs = std::vector<Output>;

Outputs OutputsOf(const RunCommand& command) {
  return {{"--trace", command.record.trace}, {"--json", command.record.json},
          {"--vcd", command.record.vcd},     {"--svg", command.record.svg},
          {"--html", command.record.html},   {"--svf", command.record.svf},
          {"--learn", command.learn}};
}

std::vector<Use> UsesBesideOutputs(const std::vector<std::string>& scripts) {
  std::vector<Use> uses = {{IdentityOf(STDOUT_FILENO), "standard output"},
                           {IdentityOf(STDERR_FILENO), "standard error"}};
  for (const std::string& script : scripts) {
    uses.push_back({script == "-" ? IdentityOf(STDIN_FILENO) : IdentityOf(script), kScript});
  }
  return uses;
}

bool IsScript(const std::string& identity, const std::vector<Use>& uses) {
  return !identity.empty() && std::any_of(uses.begin(), uses.end(), [&identity](const Use& use) {
    return use.what == kScript && use.identity == identity;
  });
}

void RefuseShared(const Outputs& outputs, std::vector<Use> uses) {
  for (const Output& output : outputs) {
    if (output.path.empty() || output.path == kStandardError) continue;
    // A place of its own: two outputs may be on the same terminal, but not on the same "-".
    const std::string identity = output.path == "-" ? "-" : IdentityOf(output.path);
    if (identity.empty()) continue;
    if (identity == "-" && IsScript(IdentityOf(STDOUT_FILENO), uses)) {
      throw std::invalid_argument(
          fmt::format("{}: standard output is also a script", output.option));
    }
    const auto other = std::find_if(
        uses.begin(), uses.end(), [&identity](const Use& use) { return use.identity == identity; });
    if (other != uses.end()) {
      throw std::invalid_argument(
          fmt::format("{}: {} is also {}", output.option, output.path, other->what));
    }
    uses.push_back({identity, fmt::format("the file of {}", output.option)});
  }
}

}  // namespace

void RefuseSharedFiles(const RunCommand& command) {
  std::vector<Use> uses = UsesBesideOutputs(command.scripts);
  uses.push_back({IdentityOf(command.plugin), "the plug-in"});
  RefuseShared(OutputsOf(command), std::move(uses));
}

void RefuseSharedFiles(const CheckCommand& command) {
  RefuseShared({{"--json", command.json}}, UsesBesideOutputs(command.scripts));
}

void RefuseSharedFiles(const ImportCommand& command) {
  RefuseShared({{"--output", command.output}}, UsesBesideOutputs({command.file}));
}

void RefuseSharedFiles(const ServeCommand& command) {
  RefuseShared({{"--trace", command.record.trace},
                {"--json", command.record.json},
                {"--vcd", command.record.vcd},
                {"--html", command.record.html}},
               UsesBesideOutputs({}));
}

bool IsOnStandardOutput(const RunCommand& command) {
  const Outputs outputs = OutputsOf(command);
  return std::any_of(outputs.begin(), outputs.end(),
                     [](const Output& output) { return output.path == "-"; });
}

}  // namespace icehost
