// The items of one line of a GPIO script.
#ifndef ICESCRIPT_HOST_CHECK_CHECK_ITEMS_H_
#define ICESCRIPT_HOST_CHECK_CHECK_ITEMS_H_

#include <string_view>

#include "host/check/problems.h"

namespace icehost {

// Of the last item with this key, or of the line's text where there is none.
Place PlaceOfKey(const ScriptLine& line, std::string_view key);

// Whether an item has the key REPT or ENDR.
bool NamesBlock(const ScriptLine& line);

// Reports the traps of a line to which the reader gave the flags `flags`.
void CheckItems(const ScriptLine& line, int flags, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_CHECK_ITEMS_H_
