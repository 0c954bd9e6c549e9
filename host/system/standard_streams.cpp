#include "host/system/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <initializer_list>

namespace icehost {

void OccupyStandardDescriptors() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(fd, F_GETFD) != -1 || errno != EBADF) continue;
    // The lowest free number is this one. Opened the wrong way round, for the error.
    [[maybe_unused]] const int opened = open("/dev/null", fd == 0 ? O_WRONLY : O_RDONLY);
  }
}

bool CompleteStandardStreams() {
  const bool flushed = std::fflush(stdout) == 0;
  return flushed && std::ferror(stdout) == 0 && std::ferror(stderr) == 0;
}

}  // namespace icehost
