// Makes a script of a Serial Vector Format file.
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
  std::size_t most = 0;          // bytes of the script; a scan has at most four times as many bits
  Keeping keeping = kKeepReasons;
};

// Reads the file and reports what is wrong with it and what the script leaves out, sorted by place;
// reading stops when the problems are full. If `script` is
// not null and nothing is wrong, writes a script there that does the same as the file and passes
// `check`; the first `most` bytes of it otherwise are of no use. `on_progress` gets the number of
// bytes read after each statement. Throws Interrupted.
Problems ImportSvf(const SvfImport& import, std::string_view text, std::ostream* script,
                   const std::function<void(std::size_t)>& on_progress);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_IMPORTER_H_
