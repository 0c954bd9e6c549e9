// Which file a path leads to.
#ifndef ICESCRIPT_HOST_SYSTEM_FILE_IDENTITY_H_
#define ICESCRIPT_HOST_SYSTEM_FILE_IDENTITY_H_

#include <string>

namespace icehost {

// The same text for the same file, by whatever path, and for the same place where there is none
// yet. Empty for what no second opening destroys, such as a terminal or a pipe.
std::string IdentityOf(const std::string& path);
// Of an open descriptor; empty where it is closed, too.
std::string IdentityOf(int fd);
// Whether what is written to one stands behind what is written to the other: a terminal or a pipe
// too.
bool IsSameFile(int fd, int other);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_FILE_IDENTITY_H_
