#include "host/check/gpio_reading.h"

#include <algorithm>
#include <string_view>

#include "base/field_cursor.h"
#include "base/number.h"
#include "host/system/memory_file.h"

namespace icehost {
namespace {

using icescript::CString;

// More errors than this tell the user nothing new.
constexpr std::size_t kMostErrors = 100;

// The lines with text, in order: the tag, START, then one for each element of the reader's table.
std::vector<const ScriptLine*> TextLines(const ScriptText& script,
                                         const std::vector<int>& without) {
  std::vector<const ScriptLine*> lines;
  for (const ScriptLine& line : script.Lines()) {
    const bool left_out = std::find(without.begin(), without.end(), line.number) != without.end();
    if (!line.Blank() && !left_out) lines.push_back(&line);
  }
  return lines;
}

// The message without the line break, and the full stop before it, that one of the two forms ends
// in.
std::string WithoutLineBreak(std::string text) {
  if (text.size() >= 2 && text.compare(text.size() - 2, 2, ".\n") == 0)
    text.resize(text.size() - 2);
  return text;
}

// Where an item stands in a line's text; the beginning of the line where it is not found whole.
std::size_t FindItem(std::string_view text, std::string_view item) {
  for (icescript::FieldCursor fields(text, ','); fields.HasNext();) {
    const std::string_view field = fields.Next();
    if (field != item) continue;
    const std::size_t blanks = std::min(field.find_first_not_of(' '), field.size());
    return static_cast<std::size_t>(field.data() - text.data()) + blanks;
  }
  return 0;
}

// A message of the reader about a line: "Syntax error in line3 : TCK=2".
constexpr std::string_view kBeforeNumber = "Syntax error in line";
constexpr std::string_view kBeforeItem = " : ";

// The line that a message of the reader is about, or 0.
int LineNumber(std::string_view message) {
  if (message.substr(0, kBeforeNumber.size()) != kBeforeNumber) return 0;
  return icescript::ParseNumber(message.substr(kBeforeNumber.size()), 10);
}

// The line and column that a message of the reader is about.
void PlaceReaderError(const ScriptText& script, const std::string& message,
                      const std::vector<const ScriptLine*>& text_lines, Problems& problems) {
  if (const int number = LineNumber(message); number != 0) {
    const ScriptLine& line = script.Lines()[static_cast<std::size_t>(number) - 1];
    const std::string shown = WithoutLineBreak(message);
    const std::string item = shown.substr(shown.find(kBeforeItem) + kBeforeItem.size());
    problems.Error(line, line.ColumnAt(FindItem(line.text, item)), shown);
    return;
  }
  // "no start": the second line with text is not START; "no end": the file ends.
  const bool no_start = message.find("no start") != std::string::npos;
  static const ScriptLine kEmptyFile{1, "", "", 1};
  const ScriptLine& line = no_start             ? *text_lines[1]
                           : text_lines.empty() ? kEmptyFile
                                                : *text_lines.back();
  problems.Error(line, line.column, message);
}

}  // namespace

GpioReading ReadGpio(const ScriptText& script, Problems& problems) {
  GpioReading reading;
  while (reading.left_out.size() < kMostErrors) {
    const MemoryFile file(script.Without(reading.left_out));
    reading.ini.emplace(CString(file.Path()));
    const int status = reading.ini->ReadGpioFile();
    reading.text_lines = TextLines(script, reading.left_out);
    reading.whole = status == icescript::GPIO_READ_OK;
    if (reading.whole) return reading;
    PlaceReaderError(script, reading.ini->error_msg, reading.text_lines, problems);
    const int number = LineNumber(reading.ini->error_msg);
    reading.whole = number == 0;  // no START, or no END: the table holds what there is
    if (reading.whole) return reading;
    reading.left_out.push_back(number);
  }
  reading.text_lines = TextLines(script, reading.left_out);
  const ScriptLine& last = script.Lines()[static_cast<std::size_t>(reading.left_out.back()) - 1];
  problems.Error(last, last.column, "too many errors: those after this line are not looked for");
  return reading;
}

}  // namespace icehost
