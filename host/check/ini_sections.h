// The sections of a JTAG script and the lines of their values, which the INI store does not keep.
#ifndef ICESCRIPT_HOST_CHECK_INI_SECTIONS_H_
#define ICESCRIPT_HOST_CHECK_INI_SECTIONS_H_

#include <array>
#include <string_view>
#include <vector>

#include "host/check/hints.h"
#include "host/check/problems.h"
#include "host/check/script_text.h"

namespace icehost {

// Returns the keys of a section with this name.
using IniKeys = Words;
const IniKeys& KeysOf(std::string_view section);

// Indexes into KeysOf: first the keys that the plug-in reads, then those that only icehost reads.
enum ControlKey : std::size_t { kReset, kCdi };
enum ScanKey : std::size_t { kIr, kDr, kDrTdo, kMask, kIrTdo, kIrMask };
constexpr std::size_t kKeysRead = 2;
constexpr std::size_t kMostKeys = 6;

struct IniSection {
  std::string_view name;  // part of the script's text
  Place first;            // of its header, or of its first value if it has none
  // For each key, the line of its last value; 0 if there is none.
  std::array<int, kMostKeys> lines;
  bool cut = false;  // the line at ScriptText::CutAt() belongs to it
};

// Reads the lines as the plug-in's reader does. Reports what is wrong with single lines and
// headers, and skips lines that the reader refuses. Returns the sections that have a value, in the
// order of their first values, like the plug-in's store.
std::vector<IniSection> FindSections(const ScriptText& script, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_INI_SECTIONS_H_
