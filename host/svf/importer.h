// A Serial Vector Format file made into a JTAG script.
#ifndef ICESCRIPT_HOST_SVF_IMPORTER_H_
#define ICESCRIPT_HOST_SVF_IMPORTER_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "host/check/problems.h"

namespace icehost {

struct ImportedSvf {
  std::string script;  // empty where there are errors
  Problems problems;   // in the order of their places, no more than some
};

// The script does what the file says, or there is an error; a warning says what of the file does
// not matter to any scan in it. Check finds nothing wrong with the script. `name` is what a comment
// calls the file; `most` bounds the script's bytes. Throws Interrupted.
ImportedSvf ImportSvf(const std::string& name, std::string_view text, std::size_t most);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_IMPORTER_H_
