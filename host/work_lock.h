// Who may touch what a run writes.
#ifndef ICESCRIPT_HOST_WORK_LOCK_H_
#define ICESCRIPT_HOST_WORK_LOCK_H_

#include <mutex>

namespace icehost {

// Held by the main thread while it is at work, so that another thread can complete the outputs
// where it is not, and does not come back.
class WorkLock {
 public:
  WorkLock() : held_(mutex_) {}

  // For the main thread: before it goes where it may be kept, and once it is back. Both may be
  // called twice in a row.
  void LetGo() {
    if (held_.owns_lock()) held_.unlock();
  }
  void TakeUp() {
    if (!held_.owns_lock()) held_.lock();
  }

  // For another thread: false while the main thread is at work; else it will wait for good.
  bool TakeOver() { return mutex_.try_lock(); }

 private:
  std::mutex mutex_;
  std::unique_lock<std::mutex> held_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_WORK_LOCK_H_
