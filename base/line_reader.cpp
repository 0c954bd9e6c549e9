#include "base/line_reader.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>

#include "base/text.h"

namespace icescript {

std::string_view ReadLine(std::istream& is, char (&buffer)[INI_LINE_BUFFER]) {
  is.getline(buffer, INI_LINE_BUFFER);  // always terminates the buffer, also where it fails
  return TrimRight({buffer, std::strcspn(buffer, "#")}, ' ');
}

std::istream& CIniFile::getline(std::istream& is, CString& str) {
  char buffer[INI_LINE_BUFFER];
  str = std::string(ReadLine(is, buffer));
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
