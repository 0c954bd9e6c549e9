// The text of a script, with the places of what stands in it.
#ifndef ICESCRIPT_HOST_CHECK_SCRIPT_TEXT_H_
#define ICESCRIPT_HOST_CHECK_SCRIPT_TEXT_H_

#include <string>
#include <string_view>
#include <vector>

namespace icehost {

// One line as the readers of the plug-in take it.
struct ScriptLine {
  int number;        // from 1
  std::string raw;   // as in the file, without its line feed
  std::string text;  // without comment and blanks
  int column;        // of the text's first character in the line, from 1

  bool Blank() const { return text.empty(); }
  // Column of a part of the text, by its position there.
  int ColumnAt(std::size_t position) const { return column + static_cast<int>(position); }
};

// The whole of `path`, "-" being standard input, up to `limit` bytes. Throws IoError that says why
// not: it does not exist, is a directory, or is binary (holds a NUL). Throws Interrupted.
std::string ReadScript(const std::string& path, std::size_t limit);

class ScriptText {
 public:
  // `name` is what messages call it.
  ScriptText(std::string name, std::string content);

  const std::string& Name() const { return name_; }
  const std::string& Content() const { return content_; }
  // The lines that the plug-in reads: up to the first that is too long for it.
  const std::vector<ScriptLine>& Lines() const { return lines_; }
  // The line that is too long, or null.
  const ScriptLine* TooLong() const { return too_long_.number != 0 ? &too_long_ : nullptr; }
  // The content with the lines of these numbers left blank.
  std::string Without(const std::vector<int>& numbers) const;

 private:
  std::string name_;
  std::string content_;
  std::vector<ScriptLine> lines_;
  ScriptLine too_long_{};
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_SCRIPT_TEXT_H_
