// What is wrong with a script or another text, and how that is shown.
#ifndef ICESCRIPT_HOST_CHECK_PROBLEMS_H_
#define ICESCRIPT_HOST_CHECK_PROBLEMS_H_

#include <array>
#include <cstddef>
#include <limits>
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
constexpr std::size_t kSeverities = 3;

struct Problem {
  Place place;  // the first one
  Severity severity;
  std::string text;
  bool always = false;  // not even --quiet hides this warning
  // If problems are grouped:
  long more = 0;                  // places after the first
  std::vector<int> more_lines{};  // the lowest of their lines, each once; one more than is shown
};

// What is kept of the problems of one text.
struct Keeping {
  bool grouped = false;  // the problems of one severity and text are one problem
  std::size_t most = std::numeric_limits<std::size_t>::max();  // problems of each severity
};
constexpr Keeping kKeepEach{false, 100000};
constexpr Keeping kKeepReasons{true, 50};

struct ReportStyle {
  bool errors_only = false;  // and the warnings that are always shown
  bool colour = false;
};

// Collects the problems of one text.
class Problems {
 public:
  // Keeps every problem.
  Problems() = default;
  explicit Problems(const Keeping& keeping) : keeping_(keeping) {}

  void Error(Place place, std::string text) { Take({place, Severity::kError, std::move(text)}); }
  void Warn(Place place, std::string text) { Take({place, Severity::kWarning, std::move(text)}); }
  // Warns of an expectation that comes to nothing: a run would pass without it.
  void WarnAlways(Place place, std::string text) {
    Take({place, Severity::kWarning, std::move(text), true});
  }
  void Note(Place place, std::string text) { Take({place, Severity::kNote, std::move(text)}); }
  void Add(Problems more);

  // These count what is not kept, too.
  bool HasErrors() const { return Errors() > 0; }
  long Errors() const { return CountOf(Severity::kError).found; }
  long Warnings() const { return CountOf(Severity::kWarning).found; }
  // Whether an error was not kept: reading may stop. Warnings and notes that are not kept stop
  // nothing.
  bool IsFull() const { return CountOf(Severity::kError).lost; }
  // Sorts them by their places, as both of the writers below expect.
  void Sort();
  const std::vector<Problem>& Found() const { return found_; }

  // Writes "name:line:column: error: text", the line of `content`, a caret below it, and how many
  // more of the kind there are. `content` is the whole text. Reports at the end which severities
  // have more problems than were kept. Throws Interrupted, as does WriteJson.
  void Write(std::ostream& stream, std::string_view name, std::string_view content,
             ReportStyle style) const;
  // Writes a JSON object a line; docs/json.md describes it. ASCII only.
  void WriteJson(std::ostream& stream) const;

 private:
  struct Count {
    long found = 0;
    std::size_t kept = 0;
    bool lost = false;
  };

  void Take(Problem problem);
  const Count& CountOf(Severity severity) const {
    return counts_[static_cast<std::size_t>(severity)];
  }
  void WriteLost(std::ostream& stream, std::string_view file, ReportStyle style) const;

  Keeping keeping_;
  std::vector<Problem> found_;
  std::array<Count, kSeverities> counts_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_PROBLEMS_H_
