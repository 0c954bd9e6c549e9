// Recognises files that users give to the wrong verb.
#ifndef ICESCRIPT_HOST_CHECK_FILE_KINDS_H_
#define ICESCRIPT_HOST_CHECK_FILE_KINDS_H_

#include <optional>
#include <string_view>

#include "host/check/problems.h"

namespace icehost {

// What icehost uses a kind of file for. kNone: icehost does not read such files.
enum class FileUse { kScript, kSvf, kNone };

// If the file is of a known kind that is not for the use `wanted`, returns an error at its first
// word that names the kind and the program to use; otherwise nothing. Looks only at the beginning
// of the file, so it may mistake a script for another file, but never an SVF file.
std::optional<Problem> FindWrongKind(std::string_view content, FileUse wanted);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_FILE_KINDS_H_
