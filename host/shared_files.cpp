#include "host/shared_files.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/system/file_identity.h"

namespace icehost {
namespace {

struct Use {
  std::string identity;
  std::string what;
};

std::vector<Use> UsesBesideOutputs(const RunCommand& command) {
  std::vector<Use> uses = {{IdentityOf(command.plugin), "the plug-in"},
                           {IdentityOf(STDOUT_FILENO), "standard output"},
                           {IdentityOf(STDERR_FILENO), "standard error"}};
  for (const std::string& script : command.scripts) {
    uses.push_back({script == "-" ? IdentityOf(STDIN_FILENO) : IdentityOf(script), "a script"});
  }
  return uses;
}

}  // namespace

void RefuseSharedFiles(const RunCommand& command) {
  const struct {
    const char* option;
    const std::string& path;
  } kOutputs[] = {{"--trace", command.trace},
                  {"--json", command.json},
                  {"--vcd", command.vcd},
                  {"--svg", command.svg},
                  {"--learn", command.learn}};
  std::vector<Use> uses = UsesBesideOutputs(command);
  for (const auto& output : kOutputs) {
    if (output.path.empty() || output.path == "-") continue;
    const std::string identity = IdentityOf(output.path);
    if (identity.empty()) continue;
    const auto other = std::find_if(
        uses.begin(), uses.end(), [&identity](const Use& use) { return use.identity == identity; });
    if (other != uses.end()) {
      throw std::invalid_argument(
          fmt::format("{}: {} is also {}", output.option, output.path, other->what));
    }
    uses.push_back({identity, fmt::format("the file of {}", output.option)});
  }
}

}  // namespace icehost
