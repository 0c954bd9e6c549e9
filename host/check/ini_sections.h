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

// The keys that a section of this name knows.
using IniKeys = Words;
const IniKeys& KeysOf(std::string_view section);

// Their places in the list: first those that the plug-in reads, then those of icehost alone.
enum ControlKey : std::size_t { kReset, kCdi };
enum ScanKey : std::size_t { kIr, kDr, kDrTdo, kMask, kIrTdo, kIrMask };
constexpr std::size_t kKeysRead = 2;
constexpr std::size_t kMostKeys = 6;

struct IniSection {
  std::string_view name;  // in the script's text
  Place first;            // its header, or its first value where it has none
  // The lines with the values of its keys, the last ones; 0 where there is none.
  std::array<int, kMostKeys> lines;
  bool cut = false;  // the line at ScriptText::CutAt() would have been one of it
};

// Reads the lines as the reader does and reports what is wrong with single lines and headers; a
// line that the reader refuses is left out. Returns the sections that have a value, in the order in
// which they first get one, as the store has them.
std::vector<IniSection> FindSections(const ScriptText& script, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_INI_SECTIONS_H_
