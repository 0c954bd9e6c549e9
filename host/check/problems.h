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

// Lines and columns count from 1; columns are bytes.
struct Place {
  int line;
  int column;
};

// An error makes the plug-in refuse or skip a part of the script. A warning is about a legal part
// that is almost never intended. A note is information, and never makes a command fail.
enum class Severity : std::size_t { kError, kWarning, kNote };
constexpr std::size_t kSeverities = 3;

struct Problem {
  Place place;  // the first place if there are several
  Severity severity;
  std::string text;
  bool always = false;  // even --quiet does not hide this warning
  // For grouped problems:
  long more = 0;                  // the number of places after the first
  std::vector<int> more_lines{};  // their lowest lines, each once; at most one more than is shown
};

// Selects the problems that an object of class Problems keeps.
struct Keeping {
  bool grouped = false;  // joins problems with the same severity and text
  std::size_t most = std::numeric_limits<std::size_t>::max();  // the limit for each severity
};
constexpr Keeping kKeepEach{false, 100000};
constexpr Keeping kKeepReasons{true, 50};

struct ReportStyle {
  bool errors_only = false;  // hides notes, and warnings without `always`
  bool colour = false;
};

// Collects and shows the problems in a script or another text.
class Problems {
 public:
  // Keeps every problem.
  Problems() = default;
  explicit Problems(const Keeping& keeping) : keeping_(keeping) {}

  void Error(Place place, std::string text) { Take({place, Severity::kError, std::move(text)}); }
  void Warn(Place place, std::string text) { Take({place, Severity::kWarning, std::move(text)}); }
  // Warns even with --quiet. For use if a script seems to check a value, but does not.
  void WarnAlways(Place place, std::string text) {
    Take({place, Severity::kWarning, std::move(text), true});
  }
  void Note(Place place, std::string text) { Take({place, Severity::kNote, std::move(text)}); }
  void Add(Problems more);

  // The next three functions also count problems that are not kept.
  bool HasErrors() const { return Errors() > 0; }
  long Errors() const { return CountOf(Severity::kError).found; }
  long Warnings() const { return CountOf(Severity::kWarning).found; }
  // Returns whether an error was not kept, so that reading the text may stop.
  bool IsFull() const { return CountOf(Severity::kError).lost; }
  // Sorts the problems by place, as Write and WriteJson expect.
  void Sort();
  const std::vector<Problem>& Found() const { return found_; }

  // Writes each problem as "name:line:column: error: text", its line of `content` (the whole text),
  // a caret below the column, and the number of other places of the problem. At the end, names each
  // severity for which problems were not kept. Throws Interrupted, as WriteJson does.
  void Write(std::ostream& stream, std::string_view name, std::string_view content,
             ReportStyle style) const;
  // Writes each problem as a JSON object on one line, in ASCII, as docs/json.md describes.
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
