// A plug-in that throws.
#include <stdexcept>

#include "entry/icescript.h"

int ImplementScr(LinkHandle /*handle*/, char* /*path*/, PrintCallback /*callback*/) {
  throw std::runtime_error("out of sorts");
}
