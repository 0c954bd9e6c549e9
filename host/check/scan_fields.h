// The values of a scan: fields between commas.
#ifndef ICESCRIPT_HOST_CHECK_SCAN_FIELDS_H_
#define ICESCRIPT_HOST_CHECK_SCAN_FIELDS_H_

#include <string_view>
#include <vector>

#include "host/check/script_text.h"

namespace icehost {

// The value on a line KEY=VALUE.
std::string_view ValueOf(const ScriptLine& line);

// One value as the parser splits it. `line` must outlive the fields.
struct Fields {
  explicit Fields(const ScriptLine& at);

  // Of field i.
  Place Of(std::size_t i) const;

  const ScriptLine& line;
  std::string_view value;
  std::vector<std::string_view> text;  // none where the value holds no comma
};

// A field without its blanks.
std::string_view Trimmed(std::string_view field);
// What stands behind an optional "0x".
std::string_view HexDigits(std::string_view text);
bool IsHex(std::string_view digits);
// One or two digits, behind an optional "0x".
bool IsHexByte(std::string_view text);
// What the parser makes of a byte.
unsigned ByteOf(std::string_view text);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_SCAN_FIELDS_H_
