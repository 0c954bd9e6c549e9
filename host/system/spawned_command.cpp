#include "host/system/spawned_command.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>
#include <string_view>
#include <thread>

#include "host/system/errors.h"
#include "host/system/interrupt.h"
#include "host/system/standard_streams.h"
#include "host/system/text.h"

namespace icehost {
namespace {

using std::chrono::milliseconds;
using SteadyClock = std::chrono::steady_clock;

// How long the process group may take to end after each signal.
constexpr milliseconds kEndsWithin{2000};
constexpr milliseconds kLookAtGroupEvery{10};
constexpr milliseconds kForgetEvery{100};
// How long a command may take to end after it has closed its connection.
constexpr milliseconds kEndsAfterLoss{200};

constexpr off_t kKeptOutput = 1 << 16;
constexpr std::size_t kShownOutput = 4096;
constexpr int kShownLines = 10;

struct Launch {
  const char* command;
  int nothing;  // descriptor of the null device
  int output;
  bool forgets;  // whether the guard discards all but the end of the output
};

[[noreturn]] void BecomeCommand(const Launch& launch) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);  // in case somebody kills the guard
  setpgid(0, 0);
  dup2(launch.nothing, STDIN_FILENO);
  dup2(launch.output, STDOUT_FILENO);
  dup2(launch.output, STDERR_FILENO);
  for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  execl("/bin/sh", "sh", "-c", "--", launch.command, nullptr);
  _exit(127);
}

// The guard is forked from a process with threads, so it may call only functions that are safe in a
// signal handler. It blocks all signals, but waits for SIGTERM, which asks it to end the command.
class Guard {
 public:
  explicit Guard(const Launch& launch) : launch_(launch) {}
  // Ends with the command's status, or by SIGKILL if processes of the command may still be running.
  [[noreturn]] void Run(pid_t icehost);

 private:
  void Start();
  void DropDescriptors() const;
  static bool IsAskedWithin(milliseconds patience);
  void Reap();
  void Forget() const;
  bool EndGroup();
  bool IsGroupGone();

  Launch launch_;
  pid_t command_ = 0;  // the id of the process and of its group
  bool ended_ = false;
  int status_ = 0;
};

void Guard::Run(pid_t icehost) {
  // The guard receives SIGTERM when icehost ends. It adopts orphans of the command to reap them.
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  setpgid(0, 0);
  if (getppid() != icehost) kill(getpid(), SIGTERM);
  Start();
  DropDescriptors();
  while (!ended_ && !IsAskedWithin(kForgetEvery)) {
    Reap();
    if (launch_.forgets) Forget();
  }
  if (!EndGroup()) kill(getpid(), SIGKILL);
  _exit(WIFEXITED(status_) ? WEXITSTATUS(status_) : 128 + WTERMSIG(status_));
}

void Guard::Start() {
  command_ = fork();
  if (command_ == 0) BecomeCommand(launch_);
  if (command_ > 0) {
    setpgid(command_, command_);  // the command does the same, because either may run first
    return;
  }
  constexpr std::string_view kWhy = "cannot fork\n";
  [[maybe_unused]] const ssize_t ignored = write(launch_.output, kWhy.data(), kWhy.size());
  _exit(126);
}

// The files and connections of icehost must close when icehost ends, not when the guard ends.
void Guard::DropDescriptors() const {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(launch_.nothing, fd);
  const auto output = static_cast<unsigned>(launch_.output);
  close_range(STDERR_FILENO + 1, output - 1, 0);
  close_range(output + 1, ~0U, 0);
}

bool Guard::IsAskedWithin(milliseconds patience) {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGCHLD);
  const timespec time = {0, std::chrono::nanoseconds(patience).count()};
  return sigtimedwait(&signals, nullptr, &time) == SIGTERM;
}

void Guard::Reap() {
  int status = 0;
  for (pid_t child = 0; (child = waitpid(-1, &status, WNOHANG)) > 0;) {
    if (child != command_) continue;
    ended_ = true;
    status_ = status;
  }
}

void Guard::Forget() const {
  struct stat file = {};
  if (fstat(launch_.output, &file) != 0 || file.st_size <= kKeptOutput) return;
  fallocate(launch_.output, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 0,
            file.st_size - kKeptOutput);
}

bool Guard::EndGroup() {
  for (const int signal : {SIGTERM, SIGKILL}) {
    if (IsGroupGone()) return true;
    kill(-command_, signal);
    const auto end = SteadyClock::now() + kEndsWithin;
    while (SteadyClock::now() < end) {
      if (IsGroupGone()) return true;
      IsAskedWithin(kLookAtGroupEvery);
    }
  }
  return false;
}

bool Guard::IsGroupGone() {
  Reap();
  return kill(-command_, 0) != 0 && errno == ESRCH;
}

[[noreturn]] void FailToStart() {
  throw IoError(fmt::format("cannot start the --spawn command: {}", std::strerror(errno)));
}

// Returns -1 if `fd` is not a regular file, because reading it could wait or take data from another
// reader.
int OpenToRead(int fd) {
  struct stat status = {};
  if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) return -1;
  return open(fmt::format("/proc/self/fd/{}", fd).c_str(), O_RDONLY | O_CLOEXEC);
}

// Returns the last lines of a file, indented. Cuts off the beginning of a very long line.
std::string LastLines(int fd) {
  struct stat status = {};
  std::string text(kShownOutput, '\0');
  fstat(fd, &status);
  const off_t begin = std::max<off_t>(0, status.st_size - static_cast<off_t>(text.size()));
  const ssize_t got = pread(fd, text.data(), text.size(), begin);
  text.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  while (!text.empty() && text.back() == '\n') text.pop_back();
  std::string lines;
  for (int i = 0; i < kShownLines && !text.empty(); ++i) {
    const std::size_t line = text.rfind('\n') + 1;  // 0 for the first line
    lines.insert(0, "  " + text.substr(line) + "\n");
    text.resize(line > 0 ? line - 1 : 0);
  }
  return lines;
}

}  // namespace

SpawnedCommand::~SpawnedCommand() {
  End(false);
  if (kept_ >= 0) close(kept_);
}

void SpawnedCommand::Start() {
  std::signal(SIGCHLD, SIG_DFL);  // otherwise the status of a child could be lost
  if (log_ != nullptr) log_->Begin();
  const int output = log_ != nullptr ? log_->Descriptor() : memfd_create("output", MFD_CLOEXEC);
  if (output < 0) FailToStart();
  kept_ = log_ != nullptr ? OpenToRead(output) : output;
  // O_APPEND prevents the command from overwriting its output if it opens /dev/stderr, for example.
  if (kept_ >= 0) fcntl(output, F_SETFL, O_APPEND);
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  if (nothing < 0) FailToStart();
  Fork(nothing, output);
  close(nothing);
}

void SpawnedCommand::Fork(int nothing, int output) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  const pid_t icehost = getpid();
  guard_ = fork();
  if (guard_ == 0) Guard({command_.c_str(), nothing, output, log_ == nullptr}).Run(icehost);
  const int error = errno;
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  if (guard_ > 0) return;
  guard_ = 0;
  errno = error;
  FailToStart();
}

bool SpawnedCommand::HasEnded() {
  if (guard_ > 0 && waitpid(guard_, &status_, WNOHANG) == guard_) {
    guard_ = 0;
    ended_ = true;
  }
  return ended_;
}

bool SpawnedCommand::HasEndedWithin(milliseconds patience) {
  const auto end = SteadyClock::now() + patience;
  while (!HasEnded() && SteadyClock::now() < end) std::this_thread::sleep_for(kLookAtGroupEvery);
  return ended_;
}

bool SpawnedCommand::End(bool failed) {
  if (guard_ == 0 && !ended_) return true;
  // After a signal, icehost must not end before the guard, so that no process is left running.
  const Rescue after_a_signal(Rescue::State::kWorking, [] {});
  if (!HasEndedWithin(failed ? kEndsAfterLoss : milliseconds(0))) {
    kill(guard_, SIGTERM);
    while (waitpid(guard_, &status_, 0) < 0 && errno == EINTR) {
    }
    guard_ = 0;
  }
  const bool all = WIFEXITED(status_);
  if (!all) Complain("some processes of the spawned command may still be running");
  if (failed && all) ShowOutput();
  ended_ = false;
  return all;
}

void SpawnedCommand::ShowOutput() const {
  std::string text = "the spawned command ";
  text += ended_ ? fmt::format("ended with status {}", WEXITSTATUS(status_)) : "was still running";
  const std::string lines = kept_ >= 0 ? LastLines(kept_) : "";
  if (kept_ >= 0) text += lines.empty() ? " and printed nothing" : "; its last lines of output:";
  Complain(text);
  StandardError() << PrintableLines(lines);
}

}  // namespace icehost
