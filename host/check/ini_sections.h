// The sections of a JTAG script and the lines of their values.
#ifndef ICESCRIPT_HOST_CHECK_INI_SECTIONS_H_
#define ICESCRIPT_HOST_CHECK_INI_SECTIONS_H_

#include <array>
#include <string_view>
#include <vector>

#include "host/check/hints.h"
#include "host/check/problems.h"
#include "host/check/script_text.h"

namespace icehost {

using IniKeys = Words;
// Returns the keys that a section with this name may have: first the keys that the plug-in reads,
// then the keys that only icehost reads.
const IniKeys& KeysOf(std::string_view section);

// Indexes into KeysOf.
enum ControlKey : std::size_t { kReset, kCdi };
enum ScanKey : std::size_t { kIr, kDr, kDrTdo, kMask, kIrTdo, kIrMask };
constexpr std::size_t kKeysRead = 2;  // the number of keys of a section that the plug-in reads
constexpr std::size_t kMostKeys = 6;

struct IniSection {
  std::string_view name;  // part of the script's text
  Place first;            // of its header, or of its first value if it has no header
  // The line of the last value of each key; 0 if the key has no value.
  std::array<int, kMostKeys> lines;
  bool cut = false;  // the line at ScriptText::CutAt() is in this section
};

// Reads the lines as the plug-in does, and skips the lines that it refuses. Reports problems in
// single lines and headers. Returns the sections with values, in the order of their first values.
std::vector<IniSection> FindSections(const ScriptText& script, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_INI_SECTIONS_H_
