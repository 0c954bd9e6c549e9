// The loaded plug-in.
#ifndef ICESCRIPT_HOST_PROBE_PLUGIN_H_
#define ICESCRIPT_HOST_PROBE_PLUGIN_H_

#include <string>

#include "entry/icescript.h"
#include "host/probe/probe.h"

namespace icehost {

class Plugin {
 public:
  // Loads the library at `path` and binds it to the link_ functions of this process. Throws
  // IoError, which says why it cannot be loaded.
  explicit Plugin(const std::string& path);
  ~Plugin();
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;

  // Runs one script on `probe`. Returns whether the plug-in reports success. Lets Interrupted,
  // IoError and std::bad_alloc pass; turns any other exception into PluginThrew.
  bool Run(Probe& probe, const std::string& script, PrintCallback print) const;

 private:
  void* library_;
  decltype(&ImplementScr) entry_;
};

// Returns the path of the plug-in in this program's folder, if there is one there, and otherwise
// the path at which it is installed.
std::string DefaultPluginPath();

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_PLUGIN_H_
