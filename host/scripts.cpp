#include "host/scripts.h"

#include "host/check/script_text.h"

namespace icehost {

std::vector<Script> ReadScripts(const std::vector<std::string>& paths, std::size_t size_limit) {
  std::vector<Script> scripts;
  for (const std::string& path : paths) scripts.push_back({path, ReadScript(path, size_limit)});
  return scripts;
}

}  // namespace icehost
