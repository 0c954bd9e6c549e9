// Whether a user sees colours.
#ifndef ICESCRIPT_HOST_COLOUR_H_
#define ICESCRIPT_HOST_COLOUR_H_

#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace icehost {

// On a terminal, unless NO_COLOR is set and not empty, or the terminal is one that shows text
// alone, such as the buffer of an editor.
inline bool WantsColour(int fd) {
  const char* const no_colour = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  return isatty(fd) != 0 && (no_colour == nullptr || *no_colour == '\0') &&
         (terminal == nullptr || std::strcmp(terminal, "dumb") != 0);
}

}  // namespace icehost

#endif  // ICESCRIPT_HOST_COLOUR_H_
