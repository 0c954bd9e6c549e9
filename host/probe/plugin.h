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
  // says why when it cannot.
  explicit Plugin(const std::string& path);
  ~Plugin();
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;

  // Runs one script on `probe`; true when it ran to its end. What the probe and `print` throw
  // passes through, as does std::bad_alloc; any other exception becomes PluginThrew.
  bool Run(Probe& probe, const std::string& script, PrintCallback print) const;

 private:
  void* library_;
  decltype(&ImplementScr) entry_;
};

// The plug-in that was built or installed with this program: in its own folder, or where the
// installation puts it from there.
std::string DefaultPluginPath();

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_PLUGIN_H_
