#include "host/check/remarks.h"

#include <algorithm>

namespace icehost {

std::size_t FindForeignComment(std::string_view text) {
  return std::min(text.find(';'), text.find("//"));
}

std::string_view SlipIn(std::string_view text) {
  if (text.substr(0, 3) == "\xEF\xBB\xBF") return "a byte-order mark stands before it";
  if (FindForeignComment(text) != std::string_view::npos) return "comments start with #";
  if (!text.empty() && (text.front() == '\t' || text.back() == '\t')) return "tabs are text here";
  return {};
}

std::string InParentheses(std::string_view remark) {
  return remark.empty() ? "" : std::string(" (").append(remark).append(")");
}

std::string DidYouMean(std::string_view what) {
  return what.empty() ? "" : std::string("did you mean ").append(what).append("?");
}

}  // namespace icehost
