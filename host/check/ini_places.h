// Where the sections and values of a JTAG script stand, which the INI store does not keep.
#ifndef ICESCRIPT_HOST_CHECK_INI_PLACES_H_
#define ICESCRIPT_HOST_CHECK_INI_PLACES_H_

#include <map>
#include <string>

#include "host/check/check.h"

namespace icehost {

struct ValuePlace {
  const ScriptLine* line = nullptr;
  std::size_t at = 0;  // of the value in the line's text
};
struct IniSection {
  const ScriptLine* first = nullptr;  // its header, or its first value where it has none
  std::map<std::string, ValuePlace> values;
};
// By name; those that have a value.
using IniSections = std::map<std::string, IniSection>;

// Reads the lines as the reader does and reports what is wrong with single lines and headers. The
// text without the lines that the reader refuses goes to `good`.
IniSections FindPlaces(const ScriptText& script, std::string& good, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_INI_PLACES_H_
