#include "base/line_reader.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>

#include "base/field_cursor.h"
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
  const std::string& text = str.Text();
  count = static_cast<int>(std::count(text.begin(), text.end(), separator)) + 1;
  if (count == 1) return nullptr;

  auto fields = std::make_unique<CString[]>(static_cast<std::size_t>(count));
  FieldCursor cursor(text, separator);
  std::generate_n(fields.get(), count, [&cursor] { return CString(cursor.Next()); });
  return fields.release();
}

bool CIniFile::Open(std::ifstream& file) {
  file.open(path.Text());
  if (file) return true;
  std::snprintf(error_msg, sizeof error_msg, "Unable to open Script file: %s.\n",
                path.Text().c_str());
  return false;
}

}  // namespace icescript
