// What somebody who slipped may have meant.
#ifndef ICESCRIPT_HOST_SYSTEM_NEAR_WORD_H_
#define ICESCRIPT_HOST_SYSTEM_NEAR_WORD_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace icehost {

// A slip of the pen or two.
constexpr std::size_t kNear = 2;

// Number of single edits that make one text of another.
std::size_t EditDistance(std::string_view a, std::string_view b);

// " (did you mean check?)" where one of the words is near; else nothing.
std::string DidYouMean(const std::string& word, const std::vector<std::string>& known);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_NEAR_WORD_H_
