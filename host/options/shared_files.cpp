#include "host/options/shared_files.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host/system/files.h"

namespace icehost {
namespace {

constexpr const char* kScript = "a script";

struct Use {
  std::string identity;
  std::string what;
};

struct OutputUse {
  const char* option;
  const std::string& path;
};

using Uses = std::vector<OutputUse>;

Uses OutputsOf(const OutputPaths& paths) {
  Uses outputs;
  for (std::size_t i = 0; i < kOutputCount; ++i) {
    outputs.push_back({kOutputKinds[i].option, paths[i]});
  }
  return outputs;
}

Uses OutputsOf(const RunCommand& command) {
  Uses outputs = OutputsOf(command.outputs);
  outputs.push_back({"--learn", command.learn});
  return outputs;
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

void RefuseShared(const Uses& outputs, std::vector<Use> uses) {
  for (const OutputUse& output : outputs) {
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
  RefuseShared(OutputsOf(command.outputs), UsesBesideOutputs({}));
}

bool IsOnStandardOutput(const RunCommand& command) {
  const Uses outputs = OutputsOf(command);
  return std::any_of(outputs.begin(), outputs.end(),
                     [](const OutputUse& output) { return output.path == "-"; });
}

}  // namespace icehost
