// What is wrong with a script or another text, and how that is shown.
#ifndef ICESCRIPT_HOST_CHECK_PROBLEMS_H_
#define ICESCRIPT_HOST_CHECK_PROBLEMS_H_

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace icehost {

// Both from 1; columns are bytes.
struct Place {
  int line;
  int column;
};

// An error makes the plug-in refuse or skip something; a warning is legal and almost never meant; a
// note is good to know, and never fails anything.
enum class Severity : std::size_t { kError, kWarning, kNote };

struct Problem {
  Place place;
  Severity severity;
  std::string text;
  bool always = false;  // not even --quiet hides this warning
};

struct ReportStyle {
  bool errors_only = false;  // and the warnings that are always shown
  bool colour = false;
};

// Collects the problems of one text.
class Problems {
 public:
  void Error(Place place, std::string text) { Take({place, Severity::kError, std::move(text)}); }
  void Warn(Place place, std::string text) { Take({place, Severity::kWarning, std::move(text)}); }
  // Warns of an expectation that comes to nothing: a run would pass without it.
  void WarnAlways(Place place, std::string text) {
    Take({place, Severity::kWarning, std::move(text), true});
  }
  void Note(Place place, std::string text) { Take({place, Severity::kNote, std::move(text)}); }
  void Add(Problems more);

  bool HasErrors() const { return Errors() > 0; }
  long Errors() const { return Count(Severity::kError); }
  long Warnings() const { return Count(Severity::kWarning); }
  // Sorts them by their places, as both of the writers below expect.
  void Sort();
  const std::vector<Problem>& Found() const { return found_; }

  // Writes "name:line:column: error: text", the line of `content`, and a caret below it. `content`
  // is the whole text. Throws Interrupted, as does WriteJson.
  void Write(std::ostream& stream, std::string_view name, std::string_view content,
             ReportStyle style) const;
  // Writes a JSON object a line; docs/json.md describes it. ASCII only.
  void WriteJson(std::ostream& stream) const;

 private:
  void Take(Problem problem) { found_.push_back(std::move(problem)); }
  long Count(Severity severity) const;

  std::vector<Problem> found_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_PROBLEMS_H_
