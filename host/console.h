// The messages and the progress that the user sees during a run.
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

// The plug-in's messages go to standard output; icehost's own messages, and the progress of a long
// run, go to standard error. Every message first erases the line of progress. A Rescue may end the
// run while the console waits for a reader. While the console exists, it captures standard output.
class Console {
 public:
  struct Options {
    bool quiet;  // nothing goes to standard output
    bool show_progress;
  };

  // `rescue` must outlive the console.
  Console(const Options& options, Rescue& rescue);
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  // Shows a message of the plug-in; on a terminal, without its control characters. Throws IoError
  // if standard output cannot be written.
  void Show(const char* message);
  // Flushes the messages; throws as Show does.
  void Flush();
  // Shows one of icehost's own messages on standard error.
  void Say(const std::string& line);
  // If `holds` is true, Show and Say keep their texts from now on; otherwise they show them. Drops
  // the texts kept so far.
  void Hold(bool holds);
  // Shows the kept texts, and everything from now on; throws as Show does.
  void Release();
  void SayUnlessQuiet(const std::string& line) {
    if (!quiet_) Say(line);
  }
  // Sets how many operations the run has if nothing fails; 0, the initial value, means unknown.
  void Expect(long operations) { expected_ = operations; }
  // Sets the text before the progress: how many rounds there were, and how many failed.
  void ShowRounds(const std::string& rounds) { rounds_ = rounds; }
  // Counts an operation. Draws the progress of a run that takes longer than a second.
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
  bool shared_;            // standard output and standard error are the same file
  bool mid_line_ = false;  // the last message did not end in a line feed
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
