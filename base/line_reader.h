// The line reader that CIniFile::getline and the readers of CIniFile share.
#ifndef ICESCRIPT_BASE_LINE_READER_H_
#define ICESCRIPT_BASE_LINE_READER_H_

#include <istream>
#include <string_view>

#include "base/ini_file.h"

namespace icescript {

// As CIniFile::getline, with the line as a view of `buffer` instead of a copy.
std::string_view ReadLine(std::istream& is, char (&buffer)[INI_LINE_BUFFER]);

}  // namespace icescript

#endif  // ICESCRIPT_BASE_LINE_READER_H_
