#include <cstdio>
#include <string_view>

#include "base/field_cursor.h"
#include "base/ini_file.h"
#include "base/line_reader.h"
#include "base/text.h"

namespace icescript {

bool CIniFile::ReadFile() {
  LineReader lines(path.Text());
  if (!IsReadable(lines)) return false;
  CString section;  // values before the first header are in the section ""
  while (lines.Next()) {
    const std::string_view line = TrimBlanks(lines.Text());
    if (line.empty()) continue;
    if (line.front() == '[' && line.back() == ']') {
      section = std::string(TrimRight(TrimLeft(line, '['), ']'));
      continue;
    }
    FieldCursor parts(line, '=');
    const std::string_view name = parts.Next();
    if (!parts.HasNext()) {
      std::snprintf(error_msg, sizeof error_msg, "%s in %s: Syntax error\n",
                    std::string(line).c_str(), section.Text().c_str());
      return false;
    }
    SetValue(section, CString(name), CString(line.substr(name.size() + 1)), true);
  }
  return true;
}

}  // namespace icescript
