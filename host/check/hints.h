// Hints for words and numbers that the plug-in does not read as their author meant them.
#ifndef ICESCRIPT_HOST_CHECK_HINTS_H_
#define ICESCRIPT_HOST_CHECK_HINTS_H_

#include <string>
#include <string_view>
#include <vector>

namespace icehost {

using Words = std::vector<std::string_view>;

// Returns a list such as "A, B and C". `last` is the word before its last item, such as "and".
std::string Listed(const Words& words, std::string_view last);

// Returns the candidate that is most similar to `word`. They may differ by one slip, or by two if
// the candidate is long. A slip is a missing, added or wrong letter, or two swapped letters. Upper
// and lower case are equal, and so are characters that look alike, such as 0 and O. Returns a text
// such as "NRST or TRST" for equally similar candidates, and an empty text if none is similar.
std::string Nearest(std::string_view word, const Words& candidates);

// If `text` consists of one of the keys, then blanks, a colon or nothing, and then a value, returns
// "KEY=VALUE". Otherwise returns an empty text.
std::string WithEquals(std::string_view text, const Words& keys);

// Returns the offset of a comment of another language (";" or "//"), or npos.
std::size_t FindForeignComment(std::string_view text);

constexpr const char* kTabIsText = "a tab is part of the text here, not a blank";

// Returns a remark if `text` begins with a byte-order mark, contains a comment of another language,
// or begins or ends with a tab, because the plug-in reads these as text. Otherwise returns nothing.
std::string_view SlipIn(std::string_view text);

// Return " (REMARK)" and "did you mean WHAT?", or an empty text if the argument is empty.
std::string InParentheses(std::string_view remark);
std::string DidYouMean(std::string_view what);

// Returns whether a text consists of one or more digits of the base 10 or 16.
bool IsDigits(std::string_view text, int base);

// Returns a message if the number `text` is too large for the plug-in, which keeps only its low 32
// bits. Otherwise returns an empty text.
std::string CutNumber(std::string_view text, int base);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_HINTS_H_
