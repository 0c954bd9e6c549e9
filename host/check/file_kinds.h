// Kinds of files that users give to the wrong verb, and the program or verb that reads each.
#ifndef ICESCRIPT_HOST_CHECK_FILE_KINDS_H_
#define ICESCRIPT_HOST_CHECK_FILE_KINDS_H_

#include <optional>
#include <string_view>

#include "host/check/problems.h"

namespace icehost {

// How icehost reads a file; kNone if it does not read files of this kind.
enum class FileUse { kScript, kSvf, kNone };

// Returns the error for a file of another kind than `wanted`, at the file's first word. It names
// the kind and what reads it. Returns nothing if the kind is right or unknown. The beginning of a
// file shows its kind: SVF files are never taken for another kind, but scripts may be.
std::optional<Problem> FindWrongKind(std::string_view content, FileUse wanted);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_FILE_KINDS_H_
