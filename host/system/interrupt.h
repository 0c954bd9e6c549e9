// Signals that end the program, and the loop that its waits run on.
#ifndef ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_
#define ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_

#include <asio/io_context.hpp>
#include <functional>

namespace icehost {

// From here on the first SIGINT, SIGTERM or SIGHUP is noted, for the program to end by itself; one
// that comes half a second later ends it at once. A signal that the process was started to ignore
// stays ignored. They are taken by a thread of their own, and interrupt no system call of the
// caller's. SIGPIPE and SIGXFSZ are ignored: writing to a closed connection or beyond a file's
// limit is an error like another. To be called once, before other threads are started. Throws
// IoError.
void CatchInterrupts();

// Whether a signal has been noted.
bool IsInterrupted();
// Throws Interrupted if so.
void ThrowIfInterrupted();

// The main thread may be where it looks for no signal: in the plug-in, which reads a long script,
// or waiting for somebody to take its output. `rescue` is called, on a thread of its own, half a
// second after the signal and again until it returns true; the process then ends with status 130.
// What it needs must live as long as the process or until it is taken back by `nullptr`. Without
// one the process just ends.
void SetRescue(std::function<bool()> rescue);

// The loop for every wait of the main thread; a signal stops it. Whoever waits restarts it, then
// calls ThrowIfInterrupted, then runs it: so no signal is missed. It is never destroyed, for the
// look-up of a host name that was given up cannot be ended and would be waited for.
asio::io_context& EventLoop();

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_
