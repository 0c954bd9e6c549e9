// The line reader and the splitter of CIniFile.
#include <algorithm>
#include <memory>
#include <string_view>

#include "base/ini_file.h"
#include "base/text.h"

namespace icescript {

std::istream& CIniFile::getline(std::istream& is, CString& str) {
  char buffer[INI_LINE_BUFFER];
  is.getline(buffer, INI_LINE_BUFFER);  // always terminates the buffer, also where it fails
  std::string_view line = buffer;
  line = line.substr(0, line.find('#'));
  str = std::string(TrimRight(line, ' '));
  return is;
}

CString* CIniFile::SplitString(CString str, char separator, int& count) {
  std::string_view rest = str.Text();
  const auto separators = std::count(rest.begin(), rest.end(), separator);
  count = static_cast<int>(separators) + 1;
  if (separators == 0) return nullptr;

  auto fields = std::make_unique<CString[]>(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    const std::size_t end = std::min(rest.find(separator), rest.size());
    fields[static_cast<std::size_t>(i)] = std::string(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return fields.release();
}

}  // namespace icescript
