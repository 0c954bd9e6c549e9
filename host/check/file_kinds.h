// The kinds of files that users give to the wrong verb, and who takes each.
#ifndef ICESCRIPT_HOST_CHECK_FILE_KINDS_H_
#define ICESCRIPT_HOST_CHECK_FILE_KINDS_H_

#include <optional>
#include <string_view>

#include "host/check/problems.h"

namespace icehost {

// What icehost reads a file as.
enum class FileUse { kScript, kSvf, kNone };

// Returns the error for a file that is of another kind than the verb reads: it names the kind and
// who takes it, at the file's first word. Returns nothing if the kind is right or unknown. A file
// is known by its beginning: no SVF file is taken for another kind, but a script may be.
std::optional<Problem> FindWrongKind(std::string_view content, FileUse wanted);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_FILE_KINDS_H_
