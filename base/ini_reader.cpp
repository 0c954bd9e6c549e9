// The INI reader of CIniFile.
#include <cstdio>
#include <fstream>
#include <string_view>

#include "base/ini_file.h"
#include "base/line_reader.h"
#include "base/text.h"

namespace icescript {

bool CIniFile::ReadFile() {
  std::ifstream file;
  if (!Open(file)) return false;
  CString section;  // values before the first header belong to the section named ""
  char buffer[INI_LINE_BUFFER];
  for (;;) {
    const std::string_view line = TrimBlanks(ReadLine(file, buffer));
    if (!file) return true;
    if (line.empty()) continue;
    if (line.front() == '[' && line.back() == ']') {
      section = std::string(TrimRight(TrimLeft(line, '['), ']'));
      continue;
    }
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) {
      std::snprintf(error_msg, sizeof error_msg, "%s in %s: Syntax error\n",
                    std::string(line).c_str(), section.Text().c_str());
      return false;
    }
    SetValue(section, CString(line.substr(0, equals)), CString(line.substr(equals + 1)), true);
  }
}

}  // namespace icescript
