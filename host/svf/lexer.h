// The words of a Serial Vector Format file (ASSET InterTech, revision E).
#ifndef ICESCRIPT_HOST_SVF_LEXER_H_
#define ICESCRIPT_HOST_SVF_LEXER_H_

#include <cstddef>
#include <string_view>

#include "host/check/problems.h"

namespace icehost {

struct SvfToken {
  enum class Kind { kWord, kValue, kSemicolon, kEnd };

  Kind kind;
  std::string_view text;  // of a value what stands between the parentheses, comments included
  Place place;            // of the text
};

// Words end at blanks, parentheses, semicolons and comments, which begin with "!" or "//" and end
// with their line. A value may stand on several lines.
class SvfLexer {
 public:
  // The text must outlive the tokens.
  explicit SvfLexer(std::string_view text) : text_(text) {}

  // Reports a value that is not closed. A ")" that closes none is a word.
  SvfToken Next(Problems& problems);

 private:
  bool SkipComment();
  void SkipBlanks();
  void Step();
  bool AtEnd() const { return at_ == text_.size(); }
  SvfToken One(SvfToken::Kind kind);
  SvfToken Word();
  SvfToken Value(Problems& problems);

  std::string_view text_;
  std::size_t at_ = 0;
  Place place_{1, 1};  // of text_[at_]
};

// Whether a comment begins here.
bool IsSvfComment(std::string_view text);
bool IsSvfBlank(char ch);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_LEXER_H_
