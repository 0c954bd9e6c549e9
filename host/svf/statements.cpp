#include "host/svf/statements.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "base/text.h"

namespace icehost {
namespace {

using Kind = SvfToken::Kind;

// The names are in the order of TapState.
constexpr const char* kStateNames[kTapStates] = {
    "RESET",    "IDLE",     "DRSELECT",  "DRCAPTURE", "DRSHIFT", "DREXIT1", "DRPAUSE", "DREXIT2",
    "DRUPDATE", "IRSELECT", "IRCAPTURE", "IRSHIFT",   "IREXIT1", "IRPAUSE", "IREXIT2", "IRUPDATE",
};

bool IsComment(std::string_view text) {
  return text.substr(0, 1) == "!" || text.substr(0, 2) == "//";
}

// Control-Z (0x1A) counts as a blank, because DOS ends text files with it.
bool IsBlank(char ch) {
  return ch == ' ' || (ch >= '\t' && ch <= '\r') || ch == '\x1A';
}

bool EndsWord(std::string_view text) {
  return text.empty() || IsBlank(text[0]) || text[0] == '(' || text[0] == ')' || text[0] == ';' ||
         IsComment(text);
}

std::optional<unsigned> DigitOf(char ch) {
  unsigned digit = 0;
  if (std::from_chars(&ch, &ch + 1, digit, 16).ec != std::errc()) return std::nullopt;
  return digit;
}

// The digits of a value, without leading zeros.
struct Digits {
  SvfCursor first;  // the position of the most significant digit
  std::size_t count = 0;
};

// Finds the digits of a value. If it is empty or not hexadecimal, reports that and returns nothing.
std::optional<Digits> DigitsOf(const SvfToken& value, Problems& problems) {
  SvfCursor cursor(value.text, value.place);
  cursor.SkipBlanks();
  if (cursor.AtEnd()) {
    problems.Error(value.place, "expected hexadecimal digits in the parentheses");
    return std::nullopt;
  }
  Digits digits{cursor};
  for (; !cursor.AtEnd(); cursor.SkipBlanks()) {
    const char ch = cursor.Rest()[0];
    const auto digit = DigitOf(ch);
    if (!digit.has_value()) {
      problems.Error(cursor.At(), fmt::format("\"{}\" is not a hexadecimal digit", ch));
      return std::nullopt;
    }
    if (digits.count == 0) digits.first = cursor;
    if (digits.count > 0 || *digit != 0) ++digits.count;
    cursor.Step();
  }
  return digits;
}

// Returns the bits of a value. If it is malformed or too long, reports that and returns nothing.
std::optional<Bits> BitsOf(const SvfToken& value, std::size_t length, Problems& problems) {
  auto digits = DigitsOf(value, problems);
  if (!digits.has_value()) return std::nullopt;
  Bits bits(length);
  SvfCursor cursor = digits->first;
  for (std::size_t left = digits->count; left > 0; cursor.SkipBlanks()) {
    const unsigned digit = *DigitOf(cursor.Rest()[0]);
    cursor.Step();
    --left;
    for (std::size_t i = 0; i < 4; ++i) {
      if ((digit >> i & 1) == 0) continue;
      if (4 * left + i >= length) {
        problems.Error(digits->first.At(),
                       fmt::format("a bit is set beyond the length of {} bits", length));
        return std::nullopt;
      }
      bits[4 * left + i] = true;
    }
  }
  return bits;
}

// Reads the first word, which must be a length of at most `most` bits.
std::optional<std::size_t> LengthOf(const SvfStatement& statement, std::size_t most,
                                    Problems& problems) {
  if (statement.words.empty()) {
    problems.Error(statement.keyword.place,
                   fmt::format("expected a length after {}", Quoted(statement.keyword)));
    return std::nullopt;
  }
  const SvfToken& word = statement.words[0];
  const char* const text_end = word.text.data() + word.text.size();
  std::size_t length = 0;
  const auto [end, error] = std::from_chars(word.text.data(), text_end, length);
  if (word.kind != Kind::kWord || end != text_end) {
    problems.Error(word.place, fmt::format("{} is not a length in bits", Quoted(word)));
    return std::nullopt;
  }
  if (error == std::errc() && length <= most) return length;
  problems.Error(word.place, fmt::format("more than {} bits (--size-limit allows more)", most));
  return std::nullopt;
}

enum Parameter : std::size_t { kTdi, kTdo, kMask, kSmask, kParameters };
constexpr const char* kParameterNames[kParameters] = {"TDI", "TDO", "MASK", "SMASK"};
using Values = std::optional<Bits>[kParameters];

// Reads the parameters after the length. If a parameter is wrong, reports it and returns false.
bool ReadValues(const SvfStatement& statement, std::size_t length, Values& values,
                Problems& problems) {
  const auto& words = statement.words;
  for (std::size_t i = 1; i < words.size(); i += 2) {
    const auto refuse = [&](const std::string& why) {
      problems.Error(words[i].place, why);
      return false;
    };
    const auto* const name =
        std::find_if(std::begin(kParameterNames), std::end(kParameterNames),
                     [&](const char* known) { return IsSvfWord(words[i], known); });
    if (name == std::end(kParameterNames)) {
      return refuse(fmt::format("expected TDI, TDO, MASK or SMASK, found {}", Quoted(words[i])));
    }
    std::optional<Bits>& value = values[name - std::begin(kParameterNames)];
    if (value.has_value()) return refuse(fmt::format("{} is given twice", *name));
    if (i + 1 == words.size() || words[i + 1].kind != Kind::kValue) {
      return refuse(fmt::format("expected a value in parentheses after {}", *name));
    }
    value = BitsOf(words[i + 1], length, problems);
    if (!value.has_value()) return false;
  }
  return true;
}

}  // namespace

void SvfCursor::Step() {
  place_ = rest_[0] == '\n' ? Place{place_.line + 1, 1} : Place{place_.line, place_.column + 1};
  rest_.remove_prefix(1);
}

bool SvfCursor::SkipComment() {
  if (!IsComment(rest_)) return false;
  while (!AtEnd() && rest_[0] != '\n' && rest_[0] != '\r') Step();
  return true;
}

void SvfCursor::SkipBlanks() {
  while (!AtEnd()) {
    if (SkipComment()) continue;
    if (!IsBlank(rest_[0])) return;
    Step();
  }
}

// Skips a byte-order mark, which some editors write.
SvfReader::SvfReader(std::string_view text) : size_(text.size()), cursor_(text, {1, 1}) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.substr(0, kByteOrderMark.size()) != kByteOrderMark) return;
  for (std::size_t i = 0; i < kByteOrderMark.size(); ++i) cursor_.Step();
}

SvfToken SvfReader::NextToken(Problems& problems) {
  cursor_.SkipBlanks();
  const std::string_view text = cursor_.Rest();
  const Place place = cursor_.At();
  if (text.empty()) return {Kind::kEnd, {}, place};
  if (text[0] == '(') return Value(problems);
  cursor_.Step();
  if (text[0] == ';') return {Kind::kSemicolon, {}, place};
  // A ")" without a "(" is a word.
  while (text[0] != ')' && !EndsWord(cursor_.Rest())) cursor_.Step();
  return {Kind::kWord, text.substr(0, text.size() - cursor_.Rest().size()), place};
}

// A semicolon ends even a value without ")", so that later statements are read.
SvfToken SvfReader::Value(Problems& problems) {
  const Place open = cursor_.At();
  cursor_.Step();
  const std::string_view text = cursor_.Rest();
  const Place place = cursor_.At();
  while (!cursor_.AtEnd() && cursor_.Rest()[0] != ')' && cursor_.Rest()[0] != ';') {
    if (!cursor_.SkipComment()) cursor_.Step();
  }
  const std::string_view rest = cursor_.Rest();
  if (rest.empty() || rest[0] == ';') {
    problems.Error(open, "this ( is not closed");
  } else {
    cursor_.Step();
  }
  return {Kind::kValue, text.substr(0, text.size() - rest.size()), place};
}

std::optional<SvfStatement> SvfReader::Next(Problems& problems) {
  SvfToken token = NextToken(problems);
  while (token.kind == Kind::kSemicolon) token = NextToken(problems);
  if (token.kind == Kind::kEnd) return std::nullopt;
  SvfStatement statement = {token, {}, false};
  for (token = NextToken(problems); token.kind != Kind::kSemicolon; token = NextToken(problems)) {
    if (token.kind == Kind::kEnd) {
      problems.Warn(statement.keyword.place,
                    "the last statement has no semicolon: is the file complete?");
      break;
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
  return token.kind == Kind::kWord ? fmt::format("\"{:.40}\"", token.text) : "\"(...)\"";
}

std::optional<double> SvfNumber(const SvfToken& token) {
  const std::string_view text = token.text;
  if (token.kind != Kind::kWord || text[0] < '.' || text[0] > '9') return std::nullopt;
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<TapState> SvfState(const SvfToken& token) {
  for (int i = 0; i < kTapStates; ++i) {
    if (IsSvfWord(token, kStateNames[i])) return static_cast<TapState>(i);
  }
  return std::nullopt;
}

const char* SvfStateName(TapState state) {
  return kStateNames[static_cast<int>(state)];
}

bool IsStable(TapState state) {
  return state == TapState::kTestLogicReset || state == TapState::kRunTestIdle ||
         state == TapState::kPauseDr || state == TapState::kPauseIr;
}

bool SvfShift::Compares() const {
  return std::find(mask.begin(), mask.end(), true) != mask.end();
}

void SvfShift::Append(const SvfShift& more) {
  tdi.insert(tdi.end(), more.tdi.begin(), more.tdi.end());
  tdo.insert(tdo.end(), more.tdo.begin(), more.tdo.end());
  mask.insert(mask.end(), more.mask.begin(), more.mask.end());
}

std::optional<SvfShift> SvfRegister::Take(const SvfStatement& statement, std::size_t most,
                                          Problems& problems) {
  const auto length = LengthOf(statement, most, problems);
  if (!length.has_value()) return std::nullopt;
  const bool is_new = *length != length_;
  if (is_new) {
    length_ = *length;
    tdi_ = Bits(length_);
    mask_ = Bits(length_, true);
  }
  Values values;
  if (!ReadValues(statement, length_, values, problems)) return std::nullopt;
  if (is_new && length_ > 0 && !values[kTdi].has_value()) {
    problems.Error(statement.keyword.place,
                   fmt::format("{} has a new length, so it needs TDI", Quoted(statement.keyword)));
    return std::nullopt;
  }
  tdi_ = values[kTdi].value_or(tdi_);
  mask_ = values[kMask].value_or(mask_);
  const bool compares = values[kTdo].has_value();
  return SvfShift{tdi_, compares ? *values[kTdo] : Bits(length_), compares ? mask_ : Bits(length_)};
}

}  // namespace icehost
