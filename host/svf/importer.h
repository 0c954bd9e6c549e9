// Makes a JTAG script of a Serial Vector Format file.
#ifndef ICESCRIPT_HOST_SVF_IMPORTER_H_
#define ICESCRIPT_HOST_SVF_IMPORTER_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "host/check/problems.h"

namespace icehost {

struct ImportedSvf {
  std::string script;  // empty if there are errors
  Problems problems;   // sorted by their places; reading stops when they are full
};

// Returns a script that does the same as the file and passes `check`, or errors. A warning names a
// part of the file that no scan depends on. `name` is the file's name for a comment; `most` limits
// the bytes of the script. Throws Interrupted.
ImportedSvf ImportSvf(const std::string& name, std::string_view text, std::size_t most,
                      const Keeping& keeping);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_IMPORTER_H_
