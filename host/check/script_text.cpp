#include "host/check/script_text.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "base/ini_file.h"
#include "base/text.h"
#include "host/system/errors.h"
#include "host/system/input_file.h"

namespace icehost {

std::string ReadScript(const std::string& path, std::size_t limit) {
  std::string content = ReadInput(path, limit);
  if (content.find('\0') != std::string::npos) throw IoError(path + ": is binary, not a script");
  return content;
}

ScriptText::ScriptText(std::string name, std::string content)
    : name_(std::move(name)), content_(std::move(content)) {
  std::istringstream raw_lines(content_);
  for (std::string raw; std::getline(raw_lines, raw);) {
    const int number = static_cast<int>(lines_.size()) + 1;
    std::istringstream one(raw);
    icescript::CString read;
    // An empty line fails to be read from a stream of its own, and reads as empty.
    if (!icescript::CIniFile::getline(one, read) && !raw.empty()) {
      too_long_ = {number, raw, "", 1};
      return;
    }
    const std::string_view text = icescript::TrimBlanks(read.Text());
    const auto column = static_cast<int>(text.data() - read.Text().data()) + 1;
    lines_.push_back({number, raw, std::string(text), column});
  }
}

std::string ScriptText::Without(const std::vector<int>& numbers) const {
  std::string content;
  for (const ScriptLine& line : lines_) {
    const bool left_out = std::find(numbers.begin(), numbers.end(), line.number) != numbers.end();
    content += (left_out ? "" : line.raw) + "\n";
  }
  return content;
}

}  // namespace icehost
