// Words and numbers that are not as the plug-in takes them, and what they may have been meant to
// be.
#ifndef ICESCRIPT_HOST_CHECK_HINTS_H_
#define ICESCRIPT_HOST_CHECK_HINTS_H_

#include <string>
#include <string_view>
#include <vector>

namespace icehost {

using Words = std::vector<std::string_view>;

// "A, B and C", with "and" for `last`.
std::string Listed(const Words& words, std::string_view last);

// Returns the candidate that a word is a slip or two away from, in upper case or lower: a letter
// too many, too few or another one, or two that have changed places; a character that only looks
// like the letter, such as 0 for O, is not a slip. "NRST or TRST" where several are as near, empty
// where none is near.
std::string Nearest(std::string_view word, const Words& candidates);

// "KEY=VALUE" for a text that is one of the keys and a value, with blanks, a colon or nothing in
// between; empty for any other.
std::string WithEquals(std::string_view text, const Words& keys);

// Where a comment of another language begins, or npos.
std::size_t FindForeignComment(std::string_view text);

constexpr const char* kTabIsText = "a tab is part of the text here, not a blank";

// Names a part of a text that the plug-in takes as text and that was hardly meant so: a byte-order
// mark in front, a comment of another language, a tab at an end. Empty where there is none.
std::string_view SlipIn(std::string_view text);

// " (remark)", empty where there is none.
std::string InParentheses(std::string_view remark);

// "did you mean X?", empty where there is no X.
std::string DidYouMean(std::string_view what);

// Whether a text is one digit or more of this base, 10 or 16, and nothing else.
bool IsDigits(std::string_view text, int base);

// Says which number the plug-in makes of one that is too large for it: it keeps the low 32 bits.
// Empty where it keeps the number.
std::string CutNumber(std::string_view text, int base);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_HINTS_H_
