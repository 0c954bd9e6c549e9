// SIGINT and SIGTERM.
#ifndef ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_
#define ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_

namespace icehost {

// From here on the first SIGINT or SIGTERM is noted, for the program to end by itself; the second
// ends it at once. SIGPIPE is ignored: writing to a closed connection is an error like another.
void CatchInterrupts();

// Throws Interrupted once a signal has been noted.
void ThrowIfInterrupted();
// A descriptor that is readable once a signal has been noted, to wait for along with another; -1
// before CatchInterrupts.
int InterruptFd();

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_
