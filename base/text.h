// Views of script text: the trims, the case folding and the section tag that the readers share.
#ifndef ICESCRIPT_BASE_TEXT_H_
#define ICESCRIPT_BASE_TEXT_H_

#include <cstdint>
#include <string_view>

namespace icescript {

// Capacity of one formatted line of progress.
constexpr int PRINT_LINE_BUFFER = 256;

// Drops every leading `ch`; a text of nothing else becomes empty.
inline std::string_view TrimLeft(std::string_view text, char ch) {
  while (!text.empty() && text.front() == ch) text.remove_prefix(1);
  return text;
}

// Drops trailing `ch` but never the first byte, whatever it is: three spaces become one.
// Deliberate, and seen by users: the section header "[]" names the section "]".
inline std::string_view TrimRight(std::string_view text, char ch) {
  while (text.size() > 1 && text.back() == ch) text.remove_suffix(1);
  return text;
}

// The trim of a script line, and of the keys and values of a GPIO line: carriage returns at both
// ends, then spaces at both ends. Tabs are text.
inline std::string_view TrimBlanks(std::string_view text) {
  // As a rule there is nothing to trim: neither end is a blank, nor a byte below it.
  if (!text.empty() && text.front() > ' ' && text.back() > ' ') return text;
  text = TrimRight(TrimLeft(text, '\r'), '\r');
  return TrimRight(TrimLeft(text, ' '), ' ');
}

// 'a' to 'z' folded to upper case, any other byte as it is; no locale.
constexpr char UpperCase(char ch) {
  return ch >= 'a' && ch <= 'z' ? static_cast<char>(ch - 'a' + 'A') : ch;
}

// The digit of a number below 16, in lower case.
inline char HexDigit(std::uint32_t number) {
  return "0123456789abcdef"[number];
}

// Whether `text`, folded to upper case, is `upper`.
inline bool EqualsUpper(std::string_view text, std::string_view upper) {
  if (text.size() != upper.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (UpperCase(text[i]) != upper[i]) return false;
  }
  return true;
}

// Whether a line, trimmed, is the section tag with which a GPIO script begins.
inline bool IsSectionTag(std::string_view line) {
  return line == "[ORVEX_ICE_GPIO]" || line == "[ZEVA_ICE_GPIO]";
}

}  // namespace icescript

#endif  // ICESCRIPT_BASE_TEXT_H_
