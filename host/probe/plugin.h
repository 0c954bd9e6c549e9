// Loads the plug-in and runs scripts with it.
#ifndef ICESCRIPT_HOST_PROBE_PLUGIN_H_
#define ICESCRIPT_HOST_PROBE_PLUGIN_H_

#include <string>

#include "entry/icescript.h"
#include "host/probe/probe.h"

namespace icehost {

class Plugin {
 public:
  // Loads the library at `path` for use with this process's link_ functions. Throws IoError.
  explicit Plugin(const std::string& path);
  ~Plugin();
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;

  // Runs the script at the path `script` on `probe`, and calls `print` with each message. Returns
  // whether the plug-in reports success. Lets Interrupted, IoError and std::bad_alloc pass, and
  // turns any other exception into PluginThrew.
  bool Run(Probe& probe, const std::string& script, PrintCallback print) const;

 private:
  void* library_;
  decltype(&ImplementScr) entry_;
};

// Returns the path of the plug-in in this program's folder if it exists, and otherwise the path at
// which the plug-in is installed.
std::string DefaultPluginPath();

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_PLUGIN_H_
