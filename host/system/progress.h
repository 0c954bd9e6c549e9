#ifndef ICESCRIPT_HOST_SYSTEM_PROGRESS_H_
#define ICESCRIPT_HOST_SYSTEM_PROGRESS_H_

#include <chrono>
#include <string>

namespace icehost {

// A line on standard error that shows the progress of long work. It appears when the work has taken
// a second, and is redrawn at most five times a second.
class Progress {
 public:
  // If `show` is false, IsDue always returns false.
  explicit Progress(bool show) : show_(show) {}
  ~Progress() { Erase(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  bool IsDue() const { return show_ && Clock::now() >= next_; }
  // Draws `line` in place of the previous one.
  void Draw(const std::string& line);
  void Erase();

 private:
  using Clock = std::chrono::steady_clock;

  bool show_;
  bool drawn_ = false;
  Clock::time_point next_ = Clock::now() + std::chrono::seconds(1);
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_PROGRESS_H_
