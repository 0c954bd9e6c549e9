// What a line of a GPIO script is expected to read: it says so in its comment.
#ifndef ICESCRIPT_HOST_CHECK_PIN_EXPECTATION_H_
#define ICESCRIPT_HOST_CHECK_PIN_EXPECTATION_H_

#include <optional>
#include <string_view>

#include "host/check/plan.h"
#include "host/check/problems.h"

namespace icehost {

// The comment of a line, from its "#" to the end; empty where it has none.
std::string_view CommentOf(const ScriptLine& line);

// The part of a comment that says "expect ...", behind one "#" and up to the next; empty where none
// does.
std::string_view ExpectIn(std::string_view comment);

// "# expect TDO=1, NRST=1" or "# expect VALUE/MASK" behind a line that reads the pins or does not.
// None where there is none, or where it is wrong or in the wrong place, which is reported.
std::optional<Expectation> PinExpectation(const ScriptLine& line, bool reads, Problems& problems);

// Reports what a line of a JTAG script says so: there it is said with keys.
void WarnOfExpectation(const ScriptLine& line, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_PIN_EXPECTATION_H_
