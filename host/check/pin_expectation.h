// Reads "# expect TDO=1, NRST=1" or "# expect VALUE/MASK" in the comment of a GPIO line.
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
// Splits a comment at "#". Returns the first part that begins with the word "expect", or "".
std::string_view FindExpect(std::string_view comment);
// Returns the text after "expect" in a result of FindExpect, which must not be empty.
std::string_view LevelsIn(std::string_view expect);

// The level of one pin in "NAME=LEVEL, ...".
struct PinLevel {
  unsigned pin;       // the index of its bit
  const char* level;  // points to '0' or '1' in the text
};
// Reads "NAME=LEVEL", with or without blanks around its parts. Returns nothing for any other text.
std::optional<PinLevel> ReadPinLevel(std::string_view item);

// Reads the expectation of a line that reads the pins. Reports a wrong expectation. Returns nothing
// if the line has no expectation, or if the expectation is wrong.
std::optional<Expectation> ReadPinExpectation(const ScriptLine& line, Problems& problems);

// Reports an expectation on a line that reads nothing.
void ReportVainExpectation(const ScriptLine& line, Problems& problems);

// Warns of a pin expectation in a JTAG script, which must use TDO and MASK instead.
void WarnOfPinExpectation(const ScriptLine& line, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_PIN_EXPECTATION_H_
