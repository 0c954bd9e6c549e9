// A file that icehost reads.
#ifndef ICESCRIPT_HOST_SYSTEM_INPUT_FILE_H_
#define ICESCRIPT_HOST_SYSTEM_INPUT_FILE_H_

#include <string>

namespace icehost {

// The whole of `path`, "-" being standard input. Throws IoError that says why not, and Interrupted.
std::string ReadInput(const std::string& path);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_INPUT_FILE_H_
