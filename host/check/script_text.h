#ifndef ICESCRIPT_HOST_CHECK_SCRIPT_TEXT_H_
#define ICESCRIPT_HOST_CHECK_SCRIPT_TEXT_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/check/problems.h"

namespace icehost {

// A line of a script. Its views refer to the ScriptText.
struct ScriptLine {
  ScriptLine(int line_number, std::string_view line);

  int number;             // from 1
  std::string_view raw;   // as in the file, without its line feed
  std::string_view text;  // the part that the plug-in reads: up to a comment or a NUL, trimmed

  bool Blank() const { return text.empty(); }
  // Returns whether the reader of JTAG scripts reads the line as the header of a section.
  bool IsHeader() const { return !Blank() && text.front() == '[' && text.back() == ']'; }
  // Returns the place of a part of the line; `part` must refer to `raw`.
  Place Of(std::string_view part) const {
    return {number, static_cast<int>(part.data() - raw.data()) + 1};
  }
  Place Start() const { return Of(text); }
};

// Returns the whole content of `path`; "-" is standard input. Throws IoError if it cannot be read,
// has more than `limit` bytes, or is binary: it contains a NUL, does not begin with a section
// header, and the plug-in refuses more than half of its lines. Throws OutOfResources and
// Interrupted.
std::string ReadScript(const std::string& path, std::size_t limit);

// The text of a script. Its iterators return the lines that the plug-in reads, up to the first line
// that is too long. Lines are made on request, because a script may have millions.
class ScriptText {
 public:
  class Iterator {
   public:
    // Points to the line that begins at the offset `at`.
    Iterator(std::string_view content, std::size_t at, int number);

    ScriptLine operator*() const { return {number_, raw_}; }
    // Throws Interrupted, so that a signal can end a loop over a long script.
    Iterator& operator++();
    bool operator!=(const Iterator& other) const { return at_ != other.at_; }
    // Returns the offset of the line in the content.
    std::size_t At() const { return at_; }
    int Number() const { return number_; }
    std::string_view Raw() const { return raw_; }

   private:
    std::string_view content_;
    std::size_t at_;
    int number_;
    std::string_view raw_;
  };

  // `name` is the name of the script in messages.
  ScriptText(std::string name, std::string content);

  const std::string& Name() const { return name_; }
  const std::string& Content() const { return content_; }

  Iterator begin() const { return {Read(), 0, 1}; }
  Iterator end() const { return {Read(), read_, 0}; }
  // Returns the first line at or after `from` that has text.
  Iterator WithText(Iterator from) const;
  bool HasText() const { return WithText(begin()) != end(); }
  // Returns the line `number`: a line that the plug-in reads, or the first line that is too long.
  ScriptLine Line(int number) const;
  // Returns the place at which a line becomes too long for the plug-in; nothing if no line does.
  std::optional<Place> CutAt() const;

 private:
  std::string_view Read() const { return std::string_view(content_).substr(0, read_); }

  std::string name_;
  std::string content_;
  std::size_t read_ = 0;             // the number of bytes before the line that is too long
  int too_long_ = 0;                 // the number of that line, or 0
  std::vector<std::size_t> starts_;  // the offsets of the first line and of every 16th line
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_SCRIPT_TEXT_H_
