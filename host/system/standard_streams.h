// Standard input, output and error.
#ifndef ICESCRIPT_HOST_SYSTEM_STANDARD_STREAMS_H_
#define ICESCRIPT_HOST_SYSTEM_STANDARD_STREAMS_H_

#include <cstdio>
#include <ostream>
#include <string>

namespace icehost {

// Opens each standard descriptor that is closed at the start of the process. Otherwise a file or
// connection could get its number, and text for the user would go there. Reading or writing such a
// descriptor fails. Must be called first.
void OccupyStandardDescriptors();

// Returns unbuffered standard error. A wait for its reader ends after a signal.
std::ostream& StandardError();

// Flushes the streams. Returns false if standard output or standard error did not accept everything
// that was written since the start.
bool CompleteStandardStreams();

// Returns whether to use colours on `fd`: if it is a terminal, NO_COLOR is not set or is empty, and
// TERM is not "dumb", as it is in the buffer of an editor.
bool WantsColour(int fd);

// Prints a line on standard error, as Printable returns it and without line feeds at its end.
void ComplainLine(std::string line);
// Does the same, with "icehost: " before the line.
void Complain(const std::string& what);

// Prints that memory has run out, without allocating any.
void ComplainOfMemory();

// While the object exists, captures text that a library writes to descriptor 1, for example with
// printf, and User returns the user's standard output. Only one object may exist at a time.
class CapturedOutput {
 public:
  // Throws IoError.
  CapturedOutput();
  // Restores the user's standard output.
  ~CapturedOutput();
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  FILE* User() { return user_; }
  // Returns the text that was written to descriptor 1, and flushed, since the last call.
  std::string Take();

 private:
  int kept_;
  FILE* user_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_STANDARD_STREAMS_H_
