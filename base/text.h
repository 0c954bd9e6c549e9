// Views of script text: the trims and the case folding that every reader shares.
#ifndef ICESCRIPT_BASE_TEXT_H_
#define ICESCRIPT_BASE_TEXT_H_

#include <string_view>

namespace icescript {

// Drops every leading `ch`; a text of nothing else becomes empty.
inline std::string_view TrimLeft(std::string_view text, char ch) {
  while (!text.empty() && text.front() == ch) text.remove_prefix(1);
  return text;
}

// Drops trailing `ch` but never the first byte, whatever it is: three spaces become one. Scripts in
// use depend on the difference from TrimLeft (the section header "[]" names the section "]").
inline std::string_view TrimRight(std::string_view text, char ch) {
  while (text.size() > 1 && text.back() == ch) text.remove_suffix(1);
  return text;
}

// The trim of a script line, and of the keys and values of a GPIO line: carriage returns at both
// ends, then spaces at both ends. Tabs are text.
inline std::string_view TrimBlanks(std::string_view text) {
  text = TrimRight(TrimLeft(text, '\r'), '\r');
  return TrimRight(TrimLeft(text, ' '), ' ');
}

// 'a' to 'z' folded to upper case, any other byte as it is; no locale.
inline char UpperCase(char ch) {
  return ch >= 'a' && ch <= 'z' ? static_cast<char>(ch - 'a' + 'A') : ch;
}

}  // namespace icescript

#endif  // ICESCRIPT_BASE_TEXT_H_
