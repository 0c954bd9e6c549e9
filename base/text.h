#ifndef ICESCRIPT_BASE_TEXT_H_
#define ICESCRIPT_BASE_TEXT_H_

#include <cstdint>
#include <string_view>

namespace icescript {

// The size of a PrintLine's buffer in bytes, including the terminating NUL.
constexpr int PRINT_LINE_BUFFER = 256;

// Drops every leading `ch`. A text that contains nothing else becomes empty.
inline std::string_view TrimLeft(std::string_view text, char ch) {
  while (!text.empty() && text.front() == ch) text.remove_prefix(1);
  return text;
}

// Drops every trailing `ch` but keeps the first byte of the text, so three spaces become one. This
// is deliberate, and visible to users: the section header "[]" has the name "]".
inline std::string_view TrimRight(std::string_view text, char ch) {
  while (text.size() > 1 && text.back() == ch) text.remove_suffix(1);
  return text;
}

// Trims a script line, or a key or value of a GPIO line. Drops carriage returns at both ends, then
// spaces at both ends, but no tabs.
inline std::string_view TrimBlanks(std::string_view text) {
  // Usually neither end is a space or a control character, so there is nothing to trim.
  if (!text.empty() && text.front() > ' ' && text.back() > ' ') return text;
  text = TrimRight(TrimLeft(text, '\r'), '\r');
  return TrimRight(TrimLeft(text, ' '), ' ');
}

// Returns 'a' to 'z' in upper case and any other byte unchanged, in every locale.
constexpr char UpperCase(char ch) {
  return ch >= 'a' && ch <= 'z' ? static_cast<char>(ch - 'a' + 'A') : ch;
}

// Returns the hexadecimal digit of a number below 16, in lower case.
inline char HexDigit(std::uint32_t number) {
  return "0123456789abcdef"[number];
}

// Returns whether `text` in upper case is equal to `upper`.
inline bool EqualsUpper(std::string_view text, std::string_view upper) {
  if (text.size() != upper.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (UpperCase(text[i]) != upper[i]) return false;
  }
  return true;
}

// Returns whether a trimmed line is the section tag that begins a GPIO script.
inline bool IsSectionTag(std::string_view line) {
  return line == "[ORVEX_ICE_GPIO]" || line == "[ZEVA_ICE_GPIO]";
}

}  // namespace icescript

#endif  // ICESCRIPT_BASE_TEXT_H_
