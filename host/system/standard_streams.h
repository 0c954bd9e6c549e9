// Standard input, output and error.
#ifndef ICESCRIPT_HOST_SYSTEM_STANDARD_STREAMS_H_
#define ICESCRIPT_HOST_SYSTEM_STANDARD_STREAMS_H_

#include <cstdio>
#include <ostream>
#include <string>

namespace icehost {

// Occupies the standard descriptors that the process was started without, so that no file or
// connection gets their numbers, and text for the user with them: using one is an error. To be
// called first.
void OccupyStandardDescriptors();

// Standard error, without a buffer. A wait for its reader ends after a signal.
std::ostream& StandardError();

// Writes out the buffers. Returns false if standard output or standard error did not take
// everything that was written to it since the start.
bool CompleteStandardStreams();

// Returns whether a user sees colours: on a terminal, unless NO_COLOR is set and not empty, or the
// terminal shows text alone, such as the buffer of an editor.
bool WantsColour(int fd);

// Prints a line on standard error, made Printable and without the line feeds at its end.
void ComplainLine(std::string line);
// Prints icehost's own words in such a line.
void Complain(const std::string& what);

// Prints that memory has run out, and takes none for that.
void ComplainOfMemory();

// While it exists, it keeps what a library writes to descriptor 1, as printf does, and the user's
// standard output is the stream of this object. One at a time.
class CapturedOutput {
 public:
  // Throws IoError.
  CapturedOutput();
  // Makes standard output the user's again.
  ~CapturedOutput();
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  FILE* User() { return user_; }
  // Returns what was written, and flushed, since the last call.
  std::string Take();

 private:
  int kept_;
  FILE* user_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_STANDARD_STREAMS_H_
