// Recognises files that users give to the wrong verb.
#ifndef ICESCRIPT_HOST_CHECK_FILE_KINDS_H_
#define ICESCRIPT_HOST_CHECK_FILE_KINDS_H_

#include <optional>
#include <string_view>

#include "host/check/problems.h"

namespace icehost {

// The use that icehost has for a kind of file. kNone: icehost does not read such files.
enum class FileUse { kScript, kSvf, kNone };

// If the file is of a known kind that has another use than `wanted`, returns an error that names
// the kind and the program to use, at the file's first word. Otherwise returns nothing. Looks only
// at the beginning, so it may mistake a script for another kind of file, but never an SVF file.
std::optional<Problem> FindWrongKind(std::string_view content, FileUse wanted);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_FILE_KINDS_H_
