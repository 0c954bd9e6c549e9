// Recognises files that users give to the wrong verb.
#ifndef ICESCRIPT_HOST_CHECK_FILE_KINDS_H_
#define ICESCRIPT_HOST_CHECK_FILE_KINDS_H_

#include <optional>
#include <string_view>

#include "host/check/problems.h"

namespace icehost {

// The use that icehost has for a kind of file. kNone: icehost does not read such files.
enum class FileUse { kScript, kSvf, kNone };

// If a file is of a known kind, but not for the use `wanted`, returns an error at its first word.
// The error names the kind and the program to use. Otherwise returns nothing. Looks only at the
// beginning of the file, so it may misjudge a script, but not an SVF file.
std::optional<Problem> FindWrongKind(std::string_view content, FileUse wanted);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_FILE_KINDS_H_
