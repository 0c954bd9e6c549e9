// Where the sections and values of a JTAG script stand, which the INI store does not keep.
#ifndef ICESCRIPT_HOST_CHECK_INI_SECTIONS_H_
#define ICESCRIPT_HOST_CHECK_INI_SECTIONS_H_

#include <array>
#include <string_view>
#include <vector>

#include "host/check/problems.h"

namespace icehost {

// The two keys of a section that mean something.
using IniKeys = std::array<const char*, 2>;
const IniKeys& KeysOf(std::string_view section);

struct IniSection {
  std::string_view name;     // in the script's text
  Place first;               // its header, or its first value where it has none
  std::array<int, 2> lines;  // that have the values of its keys, the last ones; 0: none has
};

// The value on a line KEY=VALUE.
inline std::string_view ValueOf(const ScriptLine& line) {
  return line.text.substr(line.text.find('=') + 1);
}

// Reads the lines as the reader does and reports what is wrong with single lines and headers; a
// line that the reader refuses is left out. Returns the sections that have a value, in the order in
// which they first get one, as the store has them.
std::vector<IniSection> FindSections(const ScriptText& script, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_INI_SECTIONS_H_
