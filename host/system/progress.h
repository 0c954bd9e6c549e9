// A line on standard error that shows the progress of long work.
#ifndef ICESCRIPT_HOST_SYSTEM_PROGRESS_H_
#define ICESCRIPT_HOST_SYSTEM_PROGRESS_H_

#include <chrono>
#include <string>

namespace icehost {

// Appears when the work has taken a second, and is redrawn at most five times a second.
class Progress {
 public:
  // Without `show`, nothing is ever drawn.
  explicit Progress(bool show) : show_(show) {}
  ~Progress() { Erase(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Returns whether it is time to draw.
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
