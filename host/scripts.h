// The scripts of a command line.
#ifndef ICESCRIPT_HOST_SCRIPTS_H_
#define ICESCRIPT_HOST_SCRIPTS_H_

#include <cstddef>
#include <string>
#include <vector>

namespace icehost {

// Read once: what is judged is what is run.
struct Script {
  std::string path;
  std::string content;
};

// All of them, each up to `size_limit` bytes. Throws as ReadScript.
std::vector<Script> ReadScripts(const std::vector<std::string>& paths, std::size_t size_limit);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SCRIPTS_H_
