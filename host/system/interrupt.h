// Signals that end the program, and the loop that its waits run on.
#ifndef ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_
#define ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_

#include <asio/io_context.hpp>
#include <functional>

namespace icehost {

// After this call the first SIGINT, SIGTERM or SIGHUP is noted, for the program to end by itself;
// one that comes half a second later ends it at once. A signal that the process was started to
// ignore stays ignored. A thread of their own takes the signals, so that they interrupt no system
// call. SIGPIPE and SIGXFSZ are ignored: writing to a closed connection or beyond a file's limit is
// an error like any other. To be called once, before other threads are started. Throws IoError.
void CatchInterrupts();

// Whether a signal has been noted.
bool IsInterrupted();
// Throws Interrupted if so.
void ThrowIfInterrupted();

// The main thread may not notice a signal: while the plug-in reads a long script, or while nobody
// takes its output. `rescue` is called, on a thread of its own, half a second after the signal and
// again until it returns true; the process then ends with status 130. Everything it uses must exist
// until the process ends or `nullptr` replaces it. Without a rescue the process just ends.
void SetRescue(std::function<bool()> rescue);

// The loop for every wait of the main thread; a signal stops it. To miss no signal, a caller
// restarts it, then calls ThrowIfInterrupted, then runs it. It is never destroyed, because that
// would wait for the look-up of a host name that was given up.
asio::io_context& EventLoop();

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_
