// A GPIO script as the plug-in's reader takes it, also where it refuses some of the lines.
#ifndef ICESCRIPT_HOST_CHECK_GPIO_READING_H_
#define ICESCRIPT_HOST_CHECK_GPIO_READING_H_

#include <optional>
#include <vector>

#include "base/ini_file.h"
#include "host/check/check.h"

namespace icehost {

struct GpioReading {
  bool whole = false;  // the table of `ini` covers the script but for the lines left out
  std::optional<icescript::CIniFile> ini;
  std::vector<int> left_out;  // numbers of the lines that were refused
  // The lines with text, in order: the tag, START, then one for each further element of the table.
  std::vector<const ScriptLine*> text_lines;
};

// Reads the script, leaves out the line that is refused, reports it, and so on, until what is left
// is read. `script` must outlive the result.
GpioReading ReadGpio(const ScriptText& script, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_GPIO_READING_H_
