#include "host/svf/lexer.h"

namespace icehost {
namespace {

using Kind = SvfToken::Kind;

bool EndsWord(std::string_view text) {
  return IsSvfBlank(text[0]) || text[0] == '(' || text[0] == ')' || text[0] == ';' ||
         IsSvfComment(text);
}

}  // namespace

bool IsSvfComment(std::string_view text) {
  return text.substr(0, 1) == "!" || text.substr(0, 2) == "//";
}

bool IsSvfBlank(char ch) {
  return ch == ' ' || (ch >= '\t' && ch <= '\r');
}

void SvfLexer::Step() {
  if (text_[at_++] == '\n') {
    ++place_.line;
    place_.column = 1;
  } else {
    ++place_.column;
  }
}

bool SvfLexer::SkipComment() {
  if (!IsSvfComment(text_.substr(at_))) return false;
  while (!AtEnd() && text_[at_] != '\n') Step();
  return true;
}

void SvfLexer::SkipBlanks() {
  while (!AtEnd()) {
    if (SkipComment()) continue;
    if (!IsSvfBlank(text_[at_])) return;
    Step();
  }
}

SvfToken SvfLexer::Next(Problems& problems) {
  SkipBlanks();
  if (AtEnd()) return {Kind::kEnd, {}, place_};
  switch (text_[at_]) {
    case '(':
      return Value(problems);
    case ')':
      return One(Kind::kWord);
    case ';':
      return One(Kind::kSemicolon);
    default:
      return Word();
  }
}

SvfToken SvfLexer::One(Kind kind) {
  const SvfToken token = {kind, text_.substr(at_, 1), place_};
  Step();
  return token;
}

SvfToken SvfLexer::Word() {
  const std::size_t begin = at_;
  const Place place = place_;
  while (!AtEnd() && !EndsWord(text_.substr(at_))) Step();
  return {Kind::kWord, text_.substr(begin, at_ - begin), place};
}

// A semicolon ends an unfinished one, so that what follows is still read.
SvfToken SvfLexer::Value(Problems& problems) {
  const Place open = place_;
  Step();
  const std::size_t begin = at_;
  const Place place = place_;
  while (!AtEnd() && text_[at_] != ')' && text_[at_] != ';') {
    if (!SkipComment()) Step();
  }
  const SvfToken value = {Kind::kValue, text_.substr(begin, at_ - begin), place};
  if (AtEnd() || text_[at_] == ';') {
    problems.Error(open, "this ( is not closed");
  } else {
    Step();
  }
  return value;
}

}  // namespace icehost
