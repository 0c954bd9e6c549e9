// Kinds of files that users give to the wrong verb, and the program or verb that reads each.
#ifndef ICESCRIPT_HOST_CHECK_FILE_KINDS_H_
#define ICESCRIPT_HOST_CHECK_FILE_KINDS_H_

#include <optional>
#include <string_view>

#include "host/check/problems.h"

namespace icehost {

// How icehost reads a file; kNone if it does not read files of this kind.
enum class FileUse { kScript, kSvf, kNone };

// If the file is not of the kind `wanted`, returns an error at its first word. The error names the
// kind and the program to use. Returns nothing if the kind is right or unknown. Looks only at the
// beginning of the file: never mistakes an SVF file, but may mistake a script.
std::optional<Problem> FindWrongKind(std::string_view content, FileUse wanted);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_FILE_KINDS_H_
