#include "host/probe/plugin.h"

#include <dlfcn.h>

#include <filesystem>
#include <new>

#include "host/system/errors.h"

namespace icehost {

namespace {

[[noreturn]] void Refuse(const std::string& why) {
  throw IoError("cannot load the plug-in: " + why);
}

}  // namespace

Plugin::Plugin(const std::string& path) : library_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (library_ == nullptr) Refuse(dlerror());
  entry_ = reinterpret_cast<decltype(entry_)>(dlsym(library_, "ImplementScr"));
  if (entry_ == nullptr) {
    dlclose(library_);
    Refuse(path + ": it does not export ImplementScr");
  }
}

Plugin::~Plugin() {
  dlclose(library_);
}

bool Plugin::Run(Probe& probe, const std::string& script, PrintCallback print) const {
  std::string path = script;  // ImplementScr needs a char*, but does not write to it
  try {
    return entry_(&probe, path.data(), print) == 0;
  } catch (const Interrupted&) {
    throw;
  } catch (const IoError&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    throw PluginThrew(std::string(": ") + error.what());
  } catch (...) {
    throw PluginThrew("");
  }
}

std::string DefaultPluginPath() {
  namespace fs = std::filesystem;
  constexpr const char* kName = "libicescript.so";
  std::error_code ignored;
  constexpr const char* kProgram = "/proc/self/exe";
  const fs::path program = fs::read_symlink(kProgram, ignored);
  if (program.empty()) return kProgram;  // dlopen will fail, and its error will name this path
  const fs::path folder = program.parent_path();
  const fs::path installed = (folder / ICEHOST_PLUGIN_FOLDER / kName).lexically_normal();
  const fs::path built = folder / kName;
  return fs::exists(built, ignored) ? built : installed;
}

}  // namespace icehost
