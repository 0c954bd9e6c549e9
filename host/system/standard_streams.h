// Standard input, output and error.
#ifndef ICESCRIPT_HOST_SYSTEM_STANDARD_STREAMS_H_
#define ICESCRIPT_HOST_SYSTEM_STANDARD_STREAMS_H_

#include <cstdio>
#include <ostream>
#include <string>

namespace icehost {

// Opens each standard descriptor that is closed at the start of the process. Otherwise a file or
// connection could get its number, and receive the text for the user. Reads and writes of such a
// descriptor fail. Must be called first.
void OccupyStandardDescriptors();

// Returns unbuffered standard error. A signal ends a wait for its reader.
std::ostream& StandardError();

// Flushes standard output and error. Returns whether both accepted everything that was written.
bool CompleteStandardStreams();

// Returns whether to use colours on `fd`: it must be a terminal, NO_COLOR must be unset or empty,
// and TERM must not be "dumb", as it is in an editor.
bool WantsColour(int fd);

// Makes `line` Printable, and prints it on standard error with exactly one line feed at its end.
void ComplainLine(std::string line);
// Prints `what` in the same way, after "icehost: ".
void Complain(const std::string& what);

// Prints that memory has run out, without allocating memory.
void ComplainOfMemory();

// Captures the text that a library writes to descriptor 1, for example with printf, while the
// object exists. User returns the real standard output. Only one object may exist at a time.
class CapturedOutput {
 public:
  // Throws IoError.
  CapturedOutput();
  // Restores descriptor 1.
  ~CapturedOutput();
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  FILE* User() { return user_; }
  // Returns the text that was written to descriptor 1 and flushed since the last call.
  std::string Take();

 private:
  int kept_;
  FILE* user_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_STANDARD_STREAMS_H_
