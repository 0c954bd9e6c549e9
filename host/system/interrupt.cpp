#include "host/system/interrupt.h"

#include <asio/signal_set.hpp>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <thread>

#include "host/system/errors.h"

namespace icehost {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM};

std::atomic<bool> interrupted{false};

void AwaitSignal(asio::signal_set& signals) {
  signals.async_wait([&signals](const asio::error_code& /*error*/, int signal) {
    if (interrupted.exchange(true)) std::_Exit(128 + signal);  // as a shell counts it
    EventLoop().stop();
    AwaitSignal(signals);
  });
}

// Of one thread: whether it takes the signals.
void MaskSignals(int how) {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : kSignals) sigaddset(&set, signal);
  pthread_sigmask(how, &set, nullptr);
}

}  // namespace

void CatchInterrupts() try {
  std::signal(SIGPIPE, SIG_IGN);
  EventLoop();
  // As long as the process lives, its thread waits here.
  static auto& loop = *new asio::io_context;
  static auto& signals = *new asio::signal_set(loop);
  for (const int signal : kSignals) signals.add(signal);
  AwaitSignal(signals);
  MaskSignals(SIG_BLOCK);
  std::thread([] {
    MaskSignals(SIG_UNBLOCK);
    loop.run();
  }).detach();
} catch (const std::system_error& error) {
  throw IoError(error.what());
}

void ThrowIfInterrupted() {
  if (interrupted) throw Interrupted();
}

asio::io_context& EventLoop() {
  static auto& loop = *new asio::io_context;
  return loop;
}

}  // namespace icehost
