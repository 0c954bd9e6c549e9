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
  std::string name;  // the name of the file, for a comment
  bool gpio = false;
  std::optional<double> tck_hz;  // the highest TCK rate of the probe, for a GPIO script
  std::size_t most = 0;          // the most bytes of the script; a scan has at most 4 * `most` bits
  Keeping keeping = kKeepReasons;
};

// Reads `text`, a file in the Serial Vector Format (SVF), and writes a script with the same effect
// to `script` unless that is null. The script passes `check`. Returns the problems in the file and
// the parts that the script leaves out, sorted by place. Stops early if the script exceeds
// SvfImport::most or Problems::IsFull is true. If there are errors, the text written is useless.
// After each statement, calls `on_progress` with the number of bytes read. Throws Interrupted.
Problems ImportSvf(const SvfImport& import, std::string_view text, std::ostream* script,
                   const std::function<void(std::size_t)>& on_progress);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_IMPORTER_H_
