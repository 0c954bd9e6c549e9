// Checks scripts without touching a probe.
#ifndef ICESCRIPT_HOST_CHECK_CHECK_H_
#define ICESCRIPT_HOST_CHECK_CHECK_H_

#include <ostream>
#include <string>
#include <vector>

#include "host/check/script_text.h"

namespace icehost {

// One problem. An error makes the plug-in refuse or skip something; a warning is legal and almost
// never meant.
struct Problem {
  const ScriptLine* line;
  int column;  // from 1
  bool error;
  std::string text;
};

// Collects the problems of one script, which must outlive it.
class Problems {
 public:
  void Error(const ScriptLine& line, int column, const std::string& text) {
    found_.push_back({&line, column, true, text});
  }
  void Warn(const ScriptLine& line, int column, const std::string& text) {
    found_.push_back({&line, column, false, text});
  }

  bool HasErrors() const;
  // In the order of the lines: "file:line:column: error: text", the line, and a caret below it.
  void Write(std::ostream& stream, const std::string& file, bool errors_only) const;

 private:
  std::vector<Problem> found_;
};

// All problems of a script.
Problems Check(const ScriptText& script);

// What Check is made of: the problems of a script that the plug-in runs as a GPIO script, and as a
// JTAG script.
bool IsGpioScript(const ScriptText& script);
void CheckGpio(const ScriptText& script, Problems& problems);
void CheckJtag(const ScriptText& script, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_CHECK_H_
