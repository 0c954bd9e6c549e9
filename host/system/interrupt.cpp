#include "host/system/interrupt.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <future>
#include <mutex>
#include <thread>
#include <utility>

#include "host/system/errors.h"

namespace icehost {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kSignalOffset = 128;  // the exit status is this plus the number of the signal
constexpr std::chrono::milliseconds kGrace{500};

std::atomic<std::chrono::milliseconds> allowed{};
std::atomic<bool> interrupted{false};
std::atomic<Clock::time_point> work_ends{};  // must be set before `interrupted`

// These objects are never destroyed, because threads may use them while the process ends.
std::mutex& rescue_lock = *new std::mutex;
std::function<bool()>& rescue = *new std::function<bool()>;
std::promise<void>& signal_arrived = *new std::promise<void>;

bool IsRescued() {
  const std::lock_guard<std::mutex> lock(rescue_lock);
  return rescue == nullptr || rescue();
}

void SetRescue(std::function<bool()> wanted) {
  const std::lock_guard<std::mutex> lock(rescue_lock);
  rescue = std::move(wanted);
}

void EndWithoutMain() {
  signal_arrived.get_future().wait();
  std::this_thread::sleep_until(work_ends.load());
  do {
    std::this_thread::sleep_for(kGrace);
  } while (!IsRescued());
  std::_Exit(kSignalOffset + SIGINT);
}

// A signal may arrive twice, because timeout(1) sends it to its child and to the process group.
void OnSignal(int signal) {
  static Clock::time_point first;
  if (!interrupted) {
    first = Clock::now();
    work_ends = first + allowed.load();
    interrupted = true;
    EventLoop().stop();
    signal_arrived.set_value();
  } else if (Clock::now() - first > kGrace) {
    std::_Exit(kSignalOffset + signal);
  }
}

[[noreturn]] void AwaitSignals(sigset_t signals) {
  for (int signal = 0;;) {
    if (sigwait(&signals, &signal) == 0) OnSignal(signal);
  }
}

bool IsIgnored(int signal) {
  struct sigaction action = {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

void CatchInterrupts() try {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    if (!IsIgnored(signal)) sigaddset(&signals, signal);
  }
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  // Both threads start here, because a thread that cannot start after a signal could not report it.
  std::thread(AwaitSignals, signals).detach();
  std::thread(EndWithoutMain).detach();
} catch (const std::system_error& error) {
  throw IoError(fmt::format("cannot start a thread: {}", error.what()));
}

void AllowAfterSignal(std::chrono::milliseconds time) {
  allowed = time;
}

bool IsInterrupted() {
  return interrupted;
}

void ThrowIfInterrupted() {
  if (interrupted && Clock::now() >= work_ends.load()) throw Interrupted();
}

Rescue::Rescue(State state, std::function<void()> complete) : state_(state) {
  if (state_ == State::kWorking) working_.lock();
  SetRescue([this, complete = std::move(complete)] {
    // The mutex is never unlocked, because the main thread must not continue.
    if (!working_.try_lock()) return false;
    complete();
    return true;
  });
}

Rescue::~Rescue() {
  SetRescue(nullptr);
  if (state_ == State::kWorking) working_.unlock();
}

void Rescue::Enter(State state) {
  if (std::exchange(state_, state) == state) return;
  if (state == State::kWorking) {
    working_.lock();
  } else {
    working_.unlock();
  }
}

asio::io_context& EventLoop() {
  static auto& loop = *new asio::io_context;
  return loop;
}

bool AwaitOperation(Clock::time_point deadline) {
  asio::io_context& loop = EventLoop();
  for (;;) {
    loop.restart();
    const auto end = interrupted ? std::min(deadline, work_ends.load()) : deadline;
    if (loop.run_one_until(end) > 0) return true;
    // The operation may have ended while the process was stopped. Before `end`, a signal has
    // stopped the loop.
    if (Clock::now() >= end) return loop.poll_one() > 0;
  }
}

}  // namespace icehost
