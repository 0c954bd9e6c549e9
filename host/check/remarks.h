// What is said in parentheses behind a message.
#ifndef ICESCRIPT_HOST_CHECK_REMARKS_H_
#define ICESCRIPT_HOST_CHECK_REMARKS_H_

#include <string>
#include <string_view>

namespace icehost {

// Where a comment of another language begins, or npos.
std::size_t FindForeignComment(std::string_view text);

// What a text holds that the plug-in takes as a part of it and that was hardly meant so: a
// byte-order mark in front, a comment of another language, a tab at an end. Empty where it holds
// none.
std::string_view SlipIn(std::string_view text);

// " (remark)", empty where there is none.
std::string InParentheses(std::string_view remark);

// "did you mean X?", empty where there is no X.
std::string DidYouMean(std::string_view what);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_REMARKS_H_
