// A plug-in that does not run the script. The environment variable FAULT selects what it does
// instead; by default it only returns success.
#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include "entry/icescript.h"

int ImplementScr(LinkHandle /*handle*/, char* /*path*/, PrintCallback callback) {
  const char* const variable = std::getenv("FAULT");
  const std::string_view fault = variable != nullptr ? variable : "";
  if (fault == "throw") throw std::runtime_error("out of sorts");
  if (fault == "exit") {
    callback("A message.\n");
    std::exit(0);
  }
  if (fault == "quick_exit") std::quick_exit(0);
  return 0;
}
