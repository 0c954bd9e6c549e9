// What the user sees of a run while it goes on.
#ifndef ICESCRIPT_HOST_CONSOLE_H_
#define ICESCRIPT_HOST_CONSOLE_H_

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "host/system/interrupt.h"
#include "host/system/progress.h"
#include "host/system/standard_streams.h"

namespace icehost {

// Messages go to standard output, icehost's own words and the progress of a long run to standard
// error. Each line erases the line of progress first. While a user keeps us waiting, the run may be
// rescued. As long as the console lives, standard output is captured: the plug-in may write to it.
class Console {
 public:
  struct Options {
    bool quiet;  // standard output stays empty
    bool show_progress;
  };

  // `rescue` must outlive the console.
  Console(const Options& options, Rescue& rescue);
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  // Shows a message of the plug-in's; on a terminal without control characters. Throws IoError if
  // standard output takes no more.
  void Show(const char* message);
  // Ends what has been shown so far; throws as Show.
  void Flush();
  // Shows a line of icehost's own.
  void Say(const std::string& line);
  // From here on, keeps what Show and Say get, or no longer. Drops what is kept.
  void Hold(bool holds);
  // Shows what is kept, and what follows; throws as Show.
  void Release();
  void SayUnlessQuiet(const std::string& line) {
    if (!quiet_) Say(line);
  }
  // How many operations the run has if nothing fails; 0: unknown. At the beginning: none is shown.
  void Expect(long operations) { expected_ = operations; }
  // Precedes the progress: how many rounds there are, and how many failed.
  void ShowRounds(const std::string& rounds) { rounds_ = rounds; }
  // Counts an operation, and draws the progress of a run that takes longer than a second.
  void CountOperation();
  // Erases the line of progress.
  void Close() { progress_.Erase(); }

  // Returns what the plug-in itself has written to standard output since the last call.
  std::string TakeCaptured() { return output_.Take(); }
  // The time since the console was made.
  std::chrono::nanoseconds Elapsed() const { return Clock::now() - start_; }
  double Seconds() const { return std::chrono::duration<double>(Elapsed()).count(); }

 private:
  using Clock = std::chrono::steady_clock;
  struct Held {
    bool message;
    std::string text;
  };

  void Keep(bool message, const std::string& text);
  std::string ProgressText() const;

  Rescue& rescue_;
  CapturedOutput output_;
  bool quiet_;
  bool terminal_;
  bool shared_;            // standard output and standard error are one
  bool mid_line_ = false;  // the last message has no line feed
  bool holds_ = false;
  std::vector<Held> held_;
  std::size_t held_bytes_ = 0;
  long operations_ = 0;
  long expected_ = 0;
  std::string rounds_;
  Clock::time_point start_ = Clock::now();
  Progress progress_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CONSOLE_H_
