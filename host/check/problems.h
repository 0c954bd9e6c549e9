// What is wrong with a script, and how that is shown.
#ifndef ICESCRIPT_HOST_CHECK_PROBLEMS_H_
#define ICESCRIPT_HOST_CHECK_PROBLEMS_H_

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "host/check/script_text.h"

namespace icehost {

// One problem. An error makes the plug-in refuse or skip something; a warning is legal and almost
// never meant.
struct Problem {
  Place place;
  bool error;
  std::string text;
};

struct ReportStyle {
  bool errors_only = false;
  bool colour = false;
};

// Collects the problems of one script.
class Problems {
 public:
  void Error(Place place, std::string text) { found_.push_back({place, true, std::move(text)}); }
  void Warn(Place place, std::string text) { found_.push_back({place, false, std::move(text)}); }
  void Add(Problems more);

  bool HasErrors() const { return Errors() > 0; }
  long Errors() const;
  long Warnings() const { return static_cast<long>(found_.size()) - Errors(); }
  // By their places; to be called before they are written.
  void Sort();
  const std::vector<Problem>& Found() const { return found_; }
  // "file:line:column: error: text", the line, and a caret below it. Throws Interrupted.
  void Write(std::ostream& stream, const ScriptText& script, ReportStyle style) const;

 private:
  std::vector<Problem> found_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_PROBLEMS_H_
