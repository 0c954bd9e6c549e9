// What a library writes to standard output.
#ifndef ICESCRIPT_HOST_SYSTEM_CAPTURED_OUTPUT_H_
#define ICESCRIPT_HOST_SYSTEM_CAPTURED_OUTPUT_H_

#include <cstdio>
#include <string>

namespace icehost {

// While it lives, what is written to descriptor 1, as printf does, is kept here, and the user's
// standard output is the stream of this object. One at a time.
class CapturedOutput {
 public:
  // Throws IoError.
  CapturedOutput();
  // Standard output is the user's again.
  ~CapturedOutput();
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  FILE* User() { return user_; }
  // What was written, and flushed, since the last call.
  std::string Take();

 private:
  int kept_;
  FILE* user_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_CAPTURED_OUTPUT_H_
