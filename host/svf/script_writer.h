// A JTAG script in the making.
#ifndef ICESCRIPT_HOST_SVF_SCRIPT_WRITER_H_
#define ICESCRIPT_HOST_SVF_SCRIPT_WRITER_H_

#include <cstddef>
#include <optional>
#include <string>

#include "host/svf/scan_values.h"

namespace icehost {

// Writes sections that are named after lines. Nothing that it writes comes from the file's text.
class ScriptWriter {
 public:
  // A comment of one line; without the word that would make it one of expectation.
  void Comment(const std::string& text);
  // A scan; where there is no IR or no DR, nothing is shifted through it.
  void Section(int line, const std::optional<SvfShift>& ir, const std::optional<SvfShift>& dr);

  const std::string& Text() const { return text_; }

 private:
  void Value(const char* key, const Bits& bits);
  void Expected(const char* value_key, const char* mask_key, const SvfShift& shift);

  std::string text_;
  int last_line_ = 0;  // of a section
  long on_line_ = 0;   // sections of that line so far
};

// The comment that a script begins with.
std::string ScriptHead(const std::string& name, bool loads_again);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_SCRIPT_WRITER_H_
