// "# expect TDO=1, NRST=1" or "# expect VALUE/MASK" in the comment of a GPIO line.
#ifndef ICESCRIPT_HOST_CHECK_PIN_EXPECTATION_H_
#define ICESCRIPT_HOST_CHECK_PIN_EXPECTATION_H_

#include <optional>
#include <string_view>

#include "host/check/plan.h"
#include "host/check/problems.h"
#include "host/check/script_text.h"

namespace icehost {

// Returns the text without spaces, tabs and carriage returns at its ends.
std::string_view TrimWhitespace(std::string_view text);
// Returns the comment of a line, from its "#" to the end; empty if the line has none.
std::string_view CommentOf(const ScriptLine& line);
// Returns the part of a comment that says "expect ...", from this word to the next "#"; empty if
// there is none.
std::string_view FindExpect(std::string_view comment);
// Returns the levels that "expect ..." names, as text.
std::string_view LevelsIn(std::string_view expect);

// The level of one pin in "NAME=LEVEL, ...".
struct PinLevel {
  unsigned pin;       // its bit
  const char* level;  // '0' or '1', in the text
};
// Reads "NAME=LEVEL", with blanks anywhere between; returns none for anything else.
std::optional<PinLevel> ReadPinLevel(std::string_view item);

// Reads the expectation of a line that reads the pins. Returns none if the line has none, or if the
// expectation is wrong; in that case reports it.
std::optional<Expectation> ReadPinExpectation(const ScriptLine& line, Problems& problems);

// Returns whether any line of a script may have an expectation in its comment.
bool MentionsExpectation(std::string_view content);

// Reports an expectation on a line that reads nothing.
void ReportVainExpectation(const ScriptLine& line, Problems& problems);

// Reports an expectation in a comment of a JTAG script, which states its expectations with keys.
void WarnOfPinExpectation(const ScriptLine& line, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_PIN_EXPECTATION_H_
