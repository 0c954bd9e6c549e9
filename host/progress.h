// The line that shows a long run going on.
#ifndef ICESCRIPT_HOST_PROGRESS_H_
#define ICESCRIPT_HOST_PROGRESS_H_

#include <chrono>

namespace icehost {

// Shows operations done and their rate on standard error once a run takes longer than a second.
class Progress {
 public:
  // Shows nothing unless `shown`.
  explicit Progress(bool shown) : shown_(shown) {}
  ~Progress() { Erase(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void OnOperation();
  // Makes room for other output.
  void Erase();

  std::chrono::duration<double> Elapsed() const { return Clock::now() - start_; }

 private:
  using Clock = std::chrono::steady_clock;

  bool shown_;
  bool drawn_ = false;
  long operations_ = 0;
  Clock::time_point start_ = Clock::now();
  Clock::time_point next_ = start_ + std::chrono::seconds(1);
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROGRESS_H_
