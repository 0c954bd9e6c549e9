#include "host/check/scan_fields.h"

#include "base/field_cursor.h"
#include "base/number.h"
#include "base/text.h"

namespace icehost {
std::string_view ValueOf(const ScriptLine& line) {
  return line.text.substr(line.text.find('=') + 1);
}

Fields::Fields(const ScriptLine& at) : line(at), value(ValueOf(at)) {
  if (value.find(',') == std::string_view::npos) return;
  for (icescript::FieldCursor fields(value, ','); fields.HasNext();) text.push_back(fields.Next());
}

Place Fields::Of(std::size_t i) const {
  const std::size_t blanks = text[i].find_first_not_of(' ');
  return line.Of(text[i].substr(blanks != std::string_view::npos ? blanks : 0));
}

std::string_view Trimmed(std::string_view field) {
  return icescript::TrimRight(icescript::TrimLeft(field, ' '), ' ');
}

std::string_view HexDigits(std::string_view text) {
  const bool prefixed = text.size() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  return text.substr(prefixed ? 2 : 0);
}

bool IsHex(std::string_view digits) {
  return digits.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

bool IsHexByte(std::string_view text) {
  const std::string_view digits = HexDigits(text);
  return !digits.empty() && digits.size() <= 2 && IsHex(digits);
}

unsigned ByteOf(std::string_view text) {
  return static_cast<unsigned>(icescript::ParseNumber(HexDigits(text), 16)) & 0xFF;
}

}  // namespace icehost
