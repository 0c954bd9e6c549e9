// A plug-in that does nothing and finds it well.
#include "entry/icescript.h"

int ImplementScr(LinkHandle /*handle*/, char* /*path*/, PrintCallback /*callback*/) {
  return 0;
}
