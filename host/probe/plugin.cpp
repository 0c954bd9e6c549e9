#include "host/probe/plugin.h"

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>

namespace icehost {

Plugin::Plugin(const std::string& path) : library_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (library_ == nullptr) throw std::runtime_error(dlerror());
  entry_ = reinterpret_cast<decltype(entry_)>(dlsym(library_, "ImplementScr"));
  if (entry_ == nullptr) {
    dlclose(library_);
    throw std::runtime_error(path + ": exports no ImplementScr");
  }
}

Plugin::~Plugin() {
  dlclose(library_);
}

bool Plugin::Run(Probe& probe, const std::string& script, PrintCallback print) const {
  std::string path = script;  // the entry takes a char* but does not write to it
  return entry_(&probe, path.data(), print) == 0;
}

std::string DefaultPluginPath() {
  namespace fs = std::filesystem;
  constexpr const char* kName = "libicescript.so";
  std::error_code ignored;
  const fs::path folder = fs::read_symlink("/proc/self/exe", ignored).parent_path();
  const fs::path installed = folder.parent_path() / ICEHOST_LIBRARY_FOLDER / kName;
  const fs::path built = folder / kName;
  return fs::exists(built, ignored) ? built : installed;
}

}  // namespace icehost
