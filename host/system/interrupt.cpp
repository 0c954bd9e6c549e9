#include "host/system/interrupt.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

#include "host/system/errors.h"

namespace icehost {
namespace {

volatile std::sig_atomic_t interrupted = 0;
// The handler writes a byte that nobody reads, so that a wait that begins after the signal ends
// too.
int pipe_fds[2] = {-1, -1};

extern "C" void NoteInterrupt(int /*signal*/) {
  const int saved_errno = errno;
  interrupted = 1;
  [[maybe_unused]] const ssize_t written = write(pipe_fds[1], "", 1);
  errno = saved_errno;
}

}  // namespace

void CatchInterrupts() {
  if (pipe2(pipe_fds, O_CLOEXEC | O_NONBLOCK) != 0) throw IoError(std::strerror(errno));
  struct sigaction action = {};
  action.sa_handler = NoteInterrupt;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
  action.sa_handler = SIG_IGN;
  action.sa_flags = 0;
  sigaction(SIGPIPE, &action, nullptr);
}

void ThrowIfInterrupted() {
  if (interrupted != 0) throw Interrupted();
}

int InterruptFd() {
  return pipe_fds[0];
}

}  // namespace icehost
