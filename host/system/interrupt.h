// Signals that end the program, and the loop that its waits run on.
#ifndef ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_
#define ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_

#include <asio/io_context.hpp>
#include <chrono>
#include <functional>
#include <mutex>

namespace icehost {

// After this call the first SIGINT, SIGTERM or SIGHUP is noted, for the program to end by itself;
// one that comes half a second later ends it at once. A signal that the process was started to
// ignore stays ignored. A thread of their own takes the signals, so that they interrupt no system
// call. SIGPIPE and SIGXFSZ are ignored: writing to a closed connection or beyond a file's limit is
// an error like any other. To be called once, before other threads are started. Throws IoError.
void CatchInterrupts();

// Lets what is under way go on for so long after a signal, before ThrowIfInterrupted throws. A
// Rescue comes so much later.
void AllowAfterSignal(std::chrono::milliseconds time);

// Whether a signal has been noted.
bool IsInterrupted();
// Throws Interrupted if so, and if the time that is allowed after it is over.
void ThrowIfInterrupted();

// Ends the program if a signal finds the main thread where it looks for none: in the plug-in, which
// reads a long script, or waiting for somebody to take its output. Half a second after the signal,
// and as soon as the main thread is away, `complete` is called on a thread of its own; then the
// process ends with status 130. The main thread is held up as soon as it comes back. Without a
// Rescue the process just ends. The latest one counts.
class Rescue {
 public:
  enum class State { kAway, kWorking };

  // `complete` and all that it needs must outlive the object.
  Rescue(State state, std::function<void()> complete);
  ~Rescue();
  Rescue(const Rescue&) = delete;
  Rescue& operator=(const Rescue&) = delete;

  // The state of the main thread while the scope lives; scopes may be nested. While the thread is
  // away, it touches nothing that `complete` needs.
  class Scope {
   public:
    Scope(Rescue& rescue, State state) : rescue_(rescue), before_(rescue.state_) {
      rescue.Enter(state);
    }
    ~Scope() { rescue_.Enter(before_); }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    Rescue& rescue_;
    State before_;
  };

 private:
  void Enter(State state);

  State state_;
  std::mutex working_;  // held by the main thread while it works
};

// The loop for every wait of the main thread; a signal stops it. To miss no signal, a caller
// restarts it, then calls IsInterrupted, then runs it. It is never destroyed, because that would
// wait for the look-up of a host name that was given up.
asio::io_context& EventLoop();
// Waits until an operation on the loop ends, which has been started. Returns false if the deadline,
// or the time that is allowed after a signal, is over first.
bool AwaitOperation(std::chrono::steady_clock::time_point deadline);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_
