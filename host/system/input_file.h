// A file that icehost reads.
#ifndef ICESCRIPT_HOST_SYSTEM_INPUT_FILE_H_
#define ICESCRIPT_HOST_SYSTEM_INPUT_FILE_H_

#include <cstddef>
#include <string>

namespace icehost {

// The whole of `path`, "-" being standard input, up to `limit` bytes. Throws IoError that says why
// not, and Interrupted.
std::string ReadInput(const std::string& path, std::size_t limit);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_INPUT_FILE_H_
