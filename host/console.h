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

// Prints the plug-in's messages on standard output, and icehost's own messages and the progress of
// a long run on standard error. Every message first erases the progress line. While the console
// waits for a reader, the Rescue may end the run.
class Console {
 public:
  struct Options {
    bool quiet;  // prints nothing on standard output
    bool show_progress;
  };

  // `rescue` must outlive the console.
  Console(const Options& options, Rescue& rescue);
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  // Shows a message of the plug-in. On a terminal, shows the result of PrintableLines. Throws
  // IoError if standard output cannot be written.
  void Show(const char* message);
  // Flushes the messages. Throws as Show does.
  void Flush();
  // Shows one of icehost's own messages on standard error.
  void Say(const std::string& line);
  // Drops the kept texts. From now on, Show and Say keep texts if `holds` is true, else show them.
  void Hold(bool holds);
  // Shows the kept texts, and makes Show and Say show later texts. Throws as Show does.
  void Release();
  void SayUnlessQuiet(const std::string& line) {
    if (!quiet_) Say(line);
  }
  // Sets the number of operations of a run without failures; 0, the initial value, means unknown.
  void Expect(long operations) { expected_ = operations; }
  // Sets the text that is shown before the progress, such as RunTotals::RoundText.
  void ShowRounds(const std::string& rounds) { rounds_ = rounds; }
  // Counts an operation, and draws the progress when it is due.
  void CountOperation();
  void Close() { progress_.Erase(); }

  // Returns the text that the plug-in itself has written to descriptor 1 since the last call.
  std::string TakeCaptured() { return output_.Take(); }
  // Returns the time since the console was created.
  std::chrono::nanoseconds Elapsed() const { return Clock::now() - start_; }
  double Seconds() const { return std::chrono::duration<double>(Elapsed()).count(); }

 private:
  using Clock = std::chrono::steady_clock;
  struct Held {
    bool message;  // from the plug-in; otherwise one of icehost's own
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
