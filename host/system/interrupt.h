// Signals that end the program, and the event loop on which the program waits.
#ifndef ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_
#define ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_

#include <asio/io_context.hpp>
#include <chrono>
#include <functional>
#include <mutex>

namespace icehost {

// Makes the first SIGINT, SIGTERM or SIGHUP set a flag, so that the program can end by itself. A
// second signal, at least half a second later, ends the program at once. Signals ignored at the
// start of the process stay ignored. A separate thread receives the signals, so they interrupt no
// system call. Also ignores SIGPIPE and SIGXFSZ, so that the writes that cause them fail with an
// error instead. Must be called once, before other threads start. Throws IoError.
void CatchInterrupts();

// Allows work to continue for `time` after a signal: ThrowIfInterrupted does not throw during this
// time, and a Rescue waits this much longer.
void AllowAfterSignal(std::chrono::milliseconds time);

// Returns whether a signal has arrived.
bool IsInterrupted();
// Throws Interrupted if a signal has arrived and the time allowed after it has passed.
void ThrowIfInterrupted();

// Ends the program after a signal if the main thread does not check for signals, because it is in
// the plug-in or waits for a reader of its output. Every half second after the signal, another
// thread looks at the state. If it is kAway, the thread calls `complete` and ends the process with
// status 130. The main thread can then no longer enter kWorking. Without a Rescue, the thread only
// ends the process. Only the Rescue created last has an effect.
class Rescue {
 public:
  enum class State { kAway, kWorking };

  // Everything that `complete` uses must outlive the Rescue.
  Rescue(State state, std::function<void()> complete);
  ~Rescue();
  Rescue(const Rescue&) = delete;
  Rescue& operator=(const Rescue&) = delete;

  // Sets the state of the main thread while the scope exists. Scopes may be nested. In kAway, the
  // main thread must not touch anything that `complete` uses.
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
  std::mutex working_;  // locked by the main thread while it works
};

// Returns the loop for every wait of the main thread. A signal stops the loop. To miss no signal,
// callers must restart the loop, call IsInterrupted and run the loop, in this order. The loop is
// never destroyed, because its destructor would wait for an abandoned look-up of a host name.
asio::io_context& EventLoop();
// Waits until an operation on the loop ends. Returns false if the deadline, or the end of the time
// allowed after a signal, comes first.
bool AwaitOperation(std::chrono::steady_clock::time_point deadline);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_INTERRUPT_H_
