// Words that a misspelt one may stand for.
#ifndef ICESCRIPT_HOST_CHECK_NEAR_WORDS_H_
#define ICESCRIPT_HOST_CHECK_NEAR_WORDS_H_

#include <string>
#include <string_view>
#include <vector>

namespace icehost {

using Words = std::vector<std::string_view>;

// "A, B and C", with "and" for `last`.
std::string Listed(const Words& words, std::string_view last);

// The candidate that a word is a slip or two away from, in upper case or lower: a letter too many,
// too few or another one, or two that have changed places; what only looks like the letter, such as
// 0 for O, is none. "NRST or TRST" where several are as near, empty where none is near.
std::string Nearest(std::string_view word, const Words& candidates);

// "KEY=VALUE" for a text that is one of the keys and a value, with blanks, a colon or nothing in
// between; empty for any other.
std::string WithEquals(std::string_view text, const Words& keys);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_NEAR_WORDS_H_
