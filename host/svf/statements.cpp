#include "host/svf/statements.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

#include "base/text.h"

namespace icehost {
namespace {

using Kind = SvfToken::Kind;

struct Sign {
  char ch;
  Place place;
};

struct Digit {
  unsigned value;
  Place place;
};

std::optional<unsigned> HexDigit(char ch) {
  if (ch >= '0' && ch <= '9') return static_cast<unsigned>(ch - '0');
  const char upper = icescript::UpperCase(ch);
  if (upper >= 'A' && upper <= 'F') return static_cast<unsigned>(upper - 'A' + 10);
  return std::nullopt;
}

// Walks over a value: its lines and comments.
class ValueCursor {
 public:
  explicit ValueCursor(const SvfToken& value) : rest_(value.text), place_(value.place) {}

  // The next sign that is neither blank nor comment.
  std::optional<Sign> Next() {
    while (!rest_.empty()) {
      const Sign sign = {rest_[0], place_};
      const bool comment = IsSvfComment(rest_);
      Take(comment ? std::min(rest_.find('\n'), rest_.size()) : 1);
      if (!comment && !IsSvfBlank(sign.ch)) return sign;
    }
    return std::nullopt;
  }

 private:
  void Take(std::size_t count) {
    const bool line_feed = rest_[0] == '\n';
    place_ = line_feed ? Place{place_.line + 1, 1}
                       : Place{place_.line, place_.column + static_cast<int>(count)};
    rest_.remove_prefix(count);
  }

  std::string_view rest_;
  Place place_;
};

// Without zeros in front, the most significant first; none where there are others, or more than
// `most`.
std::optional<std::vector<Digit>> Digits(const SvfToken& value, std::size_t most,
                                         Problems& problems) {
  std::vector<Digit> digits;
  bool empty = true;
  ValueCursor cursor(value);
  for (auto sign = cursor.Next(); sign.has_value(); sign = cursor.Next()) {
    const auto digit = HexDigit(sign->ch);
    if (!digit.has_value()) {
      problems.Error(sign->place, fmt::format("\"{}\" is no hexadecimal digit", sign->ch));
      return std::nullopt;
    }
    empty = false;
    if (digits.empty() && *digit == 0) continue;
    digits.push_back({*digit, sign->place});
    if (digits.size() > most) break;
  }
  if (empty) {
    problems.Error(value.place, "the parentheses hold no digit");
    return std::nullopt;
  }
  return digits;
}

}  // namespace

std::optional<SvfStatement> SvfReader::Next(Problems& problems) {
  SvfToken token = lexer_.Next(problems);
  while (token.kind == Kind::kSemicolon) token = lexer_.Next(problems);
  if (token.kind == Kind::kEnd) return std::nullopt;
  SvfStatement statement = {token, {}, false};
  for (token = lexer_.Next(problems); token.kind != Kind::kSemicolon;
       token = lexer_.Next(problems)) {
    if (token.kind == Kind::kEnd) {
      problems.Error(statement.keyword.place, "the statement has no semicolon at its end");
      return std::nullopt;
    }
    statement.is_long = statement.words.size() == kMostWords;
    if (!statement.is_long) statement.words.push_back(token);
  }
  return statement;
}

bool IsSvfWord(const SvfToken& token, std::string_view upper) {
  return token.kind == Kind::kWord && icescript::EqualsUpper(token.text, upper);
}

std::string Quoted(const SvfToken& token) {
  return token.kind == Kind::kWord ? fmt::format("\"{:.40}\"", token.text) : "a value";
}

std::optional<double> SvfNumber(const SvfToken& token) {
  const std::string_view text = token.text;
  if (token.kind != Kind::kWord || text[0] < '.' || text[0] > '9') return std::nullopt;
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number)) {
    return std::nullopt;
  }
  return number;
}

std::optional<Bits> SvfBits(const SvfToken& value, std::size_t length, Problems& problems) {
  const auto digits = Digits(value, (length + 3) / 4, problems);
  if (!digits.has_value()) return std::nullopt;
  Bits bits(length);
  std::size_t first = 0;
  for (auto digit = digits->rbegin(); digit != digits->rend(); ++digit, first += 4) {
    for (std::size_t i = 0; i < 4; ++i) {
      if ((digit->value >> i & 1) == 0) continue;
      if (first + i >= length) {
        problems.Error(digit->place,
                       fmt::format("a bit is set beyond the {} of the length", length));
        return std::nullopt;
      }
      bits[first + i] = true;
    }
  }
  return bits;
}

}  // namespace icehost
