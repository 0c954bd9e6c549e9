// Makes a script from a Serial Vector Format (SVF) file.
#ifndef ICESCRIPT_HOST_SVF_IMPORTER_H_
#define ICESCRIPT_HOST_SVF_IMPORTER_H_

#include <cstddef>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "host/check/problems.h"

namespace icehost {

struct SvfImport {
  std::string name;  // of the file, for a comment
  bool gpio = false;
  std::optional<double> tck_hz;  // of the probe, for a GPIO script
  std::size_t most = 0;          // of bytes in the script; a scan may have four times as many bits
  Keeping keeping = kKeepReasons;
};

// Reads the file. Returns its problems and the parts that the script leaves out, sorted by place.
// Stops reading when the problems are full. Unless `script` is null, writes a script to it
// that has the same effect as the file and passes `check`. If there are errors, the text written
// is useless, and has at most about SvfImport::most bytes. Calls `on_progress` with the
// number of bytes read after each statement. Throws Interrupted.
Problems ImportSvf(const SvfImport& import, std::string_view text, std::ostream* script,
                   const std::function<void(std::size_t)>& on_progress);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_IMPORTER_H_
