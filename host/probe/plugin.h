// The loaded plug-in.
#ifndef ICESCRIPT_HOST_PROBE_PLUGIN_H_
#define ICESCRIPT_HOST_PROBE_PLUGIN_H_

#include <string>

#include "entry/icescript.h"
#include "host/probe/probe.h"

namespace icehost {

class Plugin {
 public:
  // Loads the library at `path` and binds it to this process's link_ functions. Throws IoError that
  // says why it cannot.
  explicit Plugin(const std::string& path);
  ~Plugin();
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;

  // Runs one script on `probe`; returns whether it ran to its end. Exceptions of the probe and of
  // `print` and std::bad_alloc pass through; any other exception becomes PluginThrew.
  bool Run(Probe& probe, const std::string& script, PrintCallback print) const;

 private:
  void* library_;
  decltype(&ImplementScr) entry_;
};

// Returns the plug-in that was built with this program, in the program's folder, or installed with
// it.
std::string DefaultPluginPath();

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_PLUGIN_H_
