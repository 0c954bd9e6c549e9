// Hints for words and numbers that the plug-in does not read as their author meant them.
#ifndef ICESCRIPT_HOST_CHECK_HINTS_H_
#define ICESCRIPT_HOST_CHECK_HINTS_H_

#include <string>
#include <string_view>
#include <vector>

namespace icehost {

using Words = std::vector<std::string_view>;

// Returns "A, B and C", with `last` in place of "and".
std::string Listed(const Words& words, std::string_view last);

// Returns the candidate that is at most one or two slips away from `word`, in upper or lower case.
// A slip is a letter that is missing, added or wrong, or two letters that have changed places.
// Characters that look alike, such as 0 and O, count as equal. Returns "NRST or TRST" if several
// candidates are equally similar, and an empty text if none is similar.
std::string Nearest(std::string_view word, const Words& candidates);

// Returns "KEY=VALUE" if `text` is one of the keys followed by a value, with blanks, a colon or
// nothing between them. Otherwise returns an empty text.
std::string WithEquals(std::string_view text, const Words& keys);

// Returns where a comment of another language (";" or "//") begins, or npos.
std::size_t FindForeignComment(std::string_view text);

constexpr const char* kTabIsText = "a tab is part of the text here, not a blank";

// Returns a remark if `text` begins with a byte-order mark, contains a comment of another language,
// or begins or ends with a tab: the plug-in reads all of these as text. Empty otherwise.
std::string_view SlipIn(std::string_view text);

// Returns " (remark)", or an empty text if `remark` is empty.
std::string InParentheses(std::string_view remark);

// Returns "did you mean X?", or an empty text if `what` is empty.
std::string DidYouMean(std::string_view what);

// Returns whether a text consists of at least one digit in this base, 10 or 16, and nothing else.
bool IsDigits(std::string_view text, int base);

// Returns a message about a number that is too large for the plug-in, which keeps only its low 32
// bits. Returns an empty text if the plug-in keeps the number.
std::string CutNumber(std::string_view text, int base);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_HINTS_H_
