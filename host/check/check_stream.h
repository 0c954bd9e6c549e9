// What check finds as JSON lines for programs.
#ifndef ICESCRIPT_HOST_CHECK_CHECK_STREAM_H_
#define ICESCRIPT_HOST_CHECK_CHECK_STREAM_H_

#include <ostream>
#include <string>

#include "host/check/problems.h"

namespace icehost {

// What was found in all scripts that could be read.
struct CheckCounts {
  long errors = 0;
  long warnings = 0;
  long scripts = 0;
};

// One object a line, told apart by its first key; docs/json.md describes them. ASCII only.
class CheckStream {
 public:
  // `stream` must outlive this object.
  explicit CheckStream(std::ostream& stream) : stream_(stream) {}

  void Begin();
  void BeginScript(const std::string& path);
  // Throws Interrupted.
  void Write(const Problems& problems);
  // Why a script was not checked.
  void WriteError(const std::string& text);
  void EndScript(bool passed);
  void End(const CheckCounts& counts);

 private:
  std::ostream& stream_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_CHECK_STREAM_H_
