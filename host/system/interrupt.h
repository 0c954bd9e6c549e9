// Signals that end the program, and the loop that its waits run on.
#ifndef ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_
#define ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_

#include <asio/io_context.hpp>

namespace icehost {

// From here on the first SIGINT or SIGTERM is noted, for the program to end by itself; the second
// ends it at once. They are taken by a thread of their own, and interrupt no system call of the
// caller's. SIGPIPE is ignored: writing to a closed connection is an error like another. To be
// called once, before other threads are started. Throws IoError.
void CatchInterrupts();

// Throws Interrupted once a signal has been noted.
void ThrowIfInterrupted();

// The loop for every wait of the main thread; a signal stops it. Whoever waits restarts it, then
// calls ThrowIfInterrupted, then runs it: so no signal is missed. It is never destroyed, for the
// look-up of a host name that was given up cannot be ended and would be waited for.
asio::io_context& EventLoop();

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_
