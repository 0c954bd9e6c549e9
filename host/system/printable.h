// Text from scripts and from the network, for a terminal.
#ifndef ICESCRIPT_HOST_SYSTEM_PRINTABLE_H_
#define ICESCRIPT_HOST_SYSTEM_PRINTABLE_H_

#include <cctype>
#include <string>

namespace icehost {

// Control characters but tabs become blanks: none of them reaches the terminal.
inline std::string Printable(std::string text) {
  for (char& ch : text) {
    if (ch != '\t' && std::iscntrl(static_cast<unsigned char>(ch)) != 0) ch = ' ';
  }
  return text;
}

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_PRINTABLE_H_
