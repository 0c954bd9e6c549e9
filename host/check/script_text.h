// The text of a script, line by line.
#ifndef ICESCRIPT_HOST_CHECK_SCRIPT_TEXT_H_
#define ICESCRIPT_HOST_CHECK_SCRIPT_TEXT_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/check/problems.h"

namespace icehost {

// One line as the readers of the plug-in take it. The views are of the ScriptText.
struct ScriptLine {
  ScriptLine(int line_number, std::string_view line);

  int number;             // from 1
  std::string_view raw;   // as in the file, without its line feed
  std::string_view text;  // up to a comment or a NUL, without blanks

  bool Blank() const { return text.empty(); }
  // Whether the reader of JTAG scripts takes it as the header of a section.
  bool IsHeader() const { return !Blank() && text.front() == '[' && text.back() == ']'; }
  // The place of a part of the line.
  Place Of(std::string_view part) const {
    return {number, static_cast<int>(part.data() - raw.data()) + 1};
  }
  // The place of the text.
  Place Start() const { return Of(text); }
};

// Reads the whole of `path`, "-" being standard input, up to `limit` bytes. Throws IoError where it
// cannot be read or is binary: where it holds a NUL, does not begin with a section header, and the
// plug-in refuses more than half of its lines. Throws OutOfResources and Interrupted.
std::string ReadScript(const std::string& path, std::size_t limit);

// The lines that the plug-in reads: up to the first that is too long for it. Each is made when it
// is asked for and is not kept: a script may have millions.
class ScriptText {
 public:
  class Iterator {
   public:
    // The line that begins at `at`.
    Iterator(std::string_view content, std::size_t at, int number);

    ScriptLine operator*() const { return {number_, raw_}; }
    // Throws Interrupted, so that each walk over a long script can be interrupted.
    Iterator& operator++();
    bool operator!=(const Iterator& other) const { return at_ != other.at_; }
    // Where the line begins in the content.
    std::size_t At() const { return at_; }
    int Number() const { return number_; }
    std::string_view Raw() const { return raw_; }

   private:
    std::string_view content_;
    std::size_t at_;
    int number_;
    std::string_view raw_;
  };

  // `name` is what messages call it.
  ScriptText(std::string name, std::string content);

  const std::string& Name() const { return name_; }
  const std::string& Content() const { return content_; }

  Iterator begin() const { return {Read(), 0, 1}; }
  Iterator end() const { return {Read(), read_, 0}; }
  // The first line with text at or after `from`.
  Iterator WithText(Iterator from) const;
  bool HasText() const { return WithText(begin()) != end(); }
  // A line by its number, the one that is too long included.
  ScriptLine Line(int number) const;
  // Where the plug-in stops reading for a line that is too long, if there is one.
  std::optional<Place> CutAt() const;

 private:
  std::string_view Read() const { return std::string_view(content_).substr(0, read_); }

  std::string name_;
  std::string content_;
  std::size_t read_ = 0;             // bytes up to the line that is too long
  int too_long_ = 0;                 // its number, or 0
  std::vector<std::size_t> starts_;  // where every 16th line begins
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_SCRIPT_TEXT_H_
