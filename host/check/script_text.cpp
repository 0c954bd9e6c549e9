#include "host/check/script_text.h"

#include <algorithm>
#include <utility>

#include "base/ini_file.h"
#include "base/text.h"
#include "host/check/file_kinds.h"
#include "host/system/errors.h"
#include "host/system/files.h"
#include "host/system/interrupt.h"

namespace icehost {
namespace {

// Only the offset of every kStride-th line is kept.
constexpr int kStride = 16;

// The plug-in's line buffer also needs room for a terminating NUL.
bool IsTooLong(std::string_view raw) {
  return raw.size() >= icescript::INI_LINE_BUFFER;
}

// Returns the text that the plug-in reads from a line, without its comment and outer blanks.
std::string_view TextOf(std::string_view raw) {
  const std::string_view cut = raw.substr(0, std::min(raw.find('#'), raw.find('\0')));
  return icescript::TrimBlanks(icescript::TrimRight(cut, ' '));
}

// Returns whether the plug-in accepts the line in a JTAG script.
bool IsIniLine(const ScriptLine& line) {
  return line.IsHeader() || line.text.find('=') != std::string_view::npos;
}

// A binary file contains a NUL, does not begin with a header or tag, and has mostly invalid lines.
bool IsBinary(std::string_view content) {
  if (content.find('\0') == std::string_view::npos) return false;
  std::size_t lines = 0;
  std::size_t refused = 0;
  for (ScriptText::Iterator at(content, 0, 1); at.At() < content.size(); ++at) {
    const ScriptLine line = *at;
    const bool too_long = IsTooLong(line.raw);
    if (line.Blank() && !too_long) continue;
    if (lines == 0 && !too_long && line.IsHeader()) return false;
    ++lines;
    if (too_long || !IsIniLine(line)) ++refused;
    if (too_long) break;
  }
  return 2 * refused > lines;
}

}  // namespace

ScriptLine::ScriptLine(int line_number, std::string_view line)
    : number(line_number), raw(line), text(TextOf(line)) {}

std::string ReadScript(const std::string& path, std::size_t limit) {
  std::string content = ReadInput(path, limit);
  if (!IsBinary(content)) return content;
  const auto wrong = FindWrongKind(content, FileUse::kScript);
  throw IoError(path + ": " +
                (wrong.has_value() ? wrong->text : "this is a binary file, not a script"));
}

ScriptText::Iterator::Iterator(std::string_view content, std::size_t at, int number)
    : content_(content),
      at_(at),
      number_(number),
      raw_(content.substr(at, content.find('\n', at) - at)) {}

ScriptText::Iterator& ScriptText::Iterator::operator++() {
  ThrowIfInterrupted();
  // The last line may have no line feed.
  return *this = {content_, std::min(at_ + raw_.size() + 1, content_.size()), number_ + 1};
}

ScriptText::ScriptText(std::string name, std::string content)
    : name_(std::move(name)), content_(std::move(content)) {
  Iterator at(content_, 0, 1);
  starts_.push_back(0);
  for (; at.At() < content_.size(); ++at) {
    if (at.Number() % kStride == 0) starts_.push_back(at.At());
    if (IsTooLong(at.Raw())) {
      too_long_ = at.Number();
      break;
    }
  }
  read_ = at.At();
}

ScriptText::Iterator ScriptText::WithText(Iterator from) const {
  while (from != end() && (*from).Blank()) ++from;
  return from;
}

ScriptLine ScriptText::Line(int number) const {
  const int stop = number / kStride;
  Iterator at(content_, starts_[static_cast<std::size_t>(stop)], std::max(1, stop * kStride));
  while (at.Number() < number) ++at;
  return *at;
}

std::optional<Place> ScriptText::CutAt() const {
  if (too_long_ == 0) return std::nullopt;
  return Place{too_long_, icescript::INI_LINE_BUFFER};
}

}  // namespace icehost
