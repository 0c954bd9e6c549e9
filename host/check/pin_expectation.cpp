#include "host/check/pin_expectation.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "base/field_cursor.h"
#include "base/number.h"
#include "base/text.h"
#include "entry/icescript.h"
#include "host/check/gpio_items.h"
#include "host/check/hints.h"

namespace icehost {
namespace {

constexpr std::string_view kWord = "expect";
constexpr const char* kForm =
    "expected PIN=LEVEL,... (each pin once, level 0 or 1), VALUE or VALUE/MASK (up to 0x3f)";

// The levels of the pins, and a mask of the pins to compare.
struct Levels {
  int value = 0;
  int mask = 0;
};

std::string_view FirstWord(std::string_view text) {
  const auto* const end = std::find_if(text.begin(), text.end(),
                                       [](unsigned char ch) { return std::isalpha(ch) == 0; });
  return text.substr(0, static_cast<std::size_t>(end - text.begin()));
}

// Reads the levels of all pins from one number, which is decimal, or hexadecimal after "0x".
std::optional<int> PinWord(std::string_view text) {
  const bool hex = text.substr(0, 2) == "0x";
  const std::string_view digits = text.substr(hex ? 2 : 0);
  const int base = hex ? 16 : 10;
  if (digits.size() > 4 || !IsDigits(digits, base)) return std::nullopt;
  const int number = icescript::ParseNumber(digits, base);
  if (number > GPIO_PIN_ALL) return std::nullopt;
  return number;
}

std::optional<Levels> WordLevels(std::string_view text) {
  const std::size_t slash = std::min(text.find('/'), text.size());
  const std::optional<int> value = PinWord(TrimWhitespace(text.substr(0, slash)));
  const std::optional<int> mask =
      slash == text.size() ? GPIO_PIN_ALL : PinWord(TrimWhitespace(text.substr(slash + 1)));
  if (!value.has_value() || !mask.has_value()) return std::nullopt;
  return Levels{*value, *mask};
}

// Reads "NAME=LEVEL, ...". Each pin may occur only once.
std::optional<Levels> NamedLevels(std::string_view text) {
  Levels levels;
  for (icescript::FieldCursor items(text, ','); items.HasNext();) {
    const std::optional<PinLevel> item = ReadPinLevel(items.Next());
    if (!item.has_value()) return std::nullopt;
    const int bit = 1 << item->pin;
    if ((levels.mask & bit) != 0) return std::nullopt;
    levels.mask |= bit;
    if (*item->level == '1') levels.value |= bit;
  }
  return levels;
}

std::optional<Levels> ReadLevels(std::string_view text) {
  return text.find('=') != std::string_view::npos ? NamedLevels(text) : WordLevels(text);
}

// Returns the text after the first word that contains "expect", ignoring case.
std::optional<std::string_view> AfterExpect(std::string_view text) {
  const auto* const found =
      std::search(text.begin(), text.end(), kWord.begin(), kWord.end(), [](char ch, char letter) {
        return icescript::UpperCase(ch) == icescript::UpperCase(letter);
      });
  if (found == text.end()) return std::nullopt;
  const auto at = static_cast<std::size_t>(found - text.begin());
  return text.substr(at + FirstWord(text.substr(at)).size());
}

// Returns whether a text begins with levels. In "3 reads", the number is a count, not levels.
bool BeginsWithLevels(std::string_view text) {
  text = text.substr(std::min(text.find_first_not_of(" \t:="), text.size()));
  return ReadLevels(text).has_value() || NamedLevels(text.substr(0, text.find_first_of(" \t,;.")));
}

// Splits a comment at "#". Returns the first part that passes the test, or an empty text.
template <class Test>
std::string_view FindNote(std::string_view comment, Test test) {
  icescript::FieldCursor notes(comment, '#');
  while (notes.HasNext()) {
    const std::string_view note = TrimWhitespace(notes.Next());
    if (test(note)) return note;
  }
  return {};
}

bool IsExpect(std::string_view note) {
  return FirstWord(note) == kWord;
}

// Returns whether a part of a comment seems to expect levels. Without a read, a number after a
// misspelt word is not enough: "except 5" is probably a remark.
bool SeemsToExpect(std::string_view note, bool reads) {
  const auto after = AfterExpect(note);
  if (after.has_value() && BeginsWithLevels(*after)) return true;
  if (!reads && note.find('=') == std::string_view::npos) return false;
  const std::string_view word = FirstWord(note);
  return !Nearest(word, {kWord}).empty() && BeginsWithLevels(note.substr(word.size()));
}

std::string_view FindMeant(std::string_view comment, bool reads) {
  return FindNote(comment, [=](std::string_view note) { return SeemsToExpect(note, reads); });
}

// Reports a comment on a read that may have been meant as an expectation.
void ReportNearWord(const ScriptLine& line, std::string_view comment, Problems& problems) {
  const std::string remark = "this comment is not an expectation: " + DidYouMean("# expect ...");
  if (const std::string_view meant = FindMeant(comment, true); !meant.empty()) {
    return problems.Error(line.Of(meant), remark);
  }
  const std::string_view near =
      FindNote(comment, [](std::string_view note) { return AfterExpect(note).has_value(); });
  if (!near.empty()) problems.WarnAlways(line.Of(near), remark);
}

// Returns whether a comment has an expectation besides `expect`. It would have no effect.
bool HasAnother(std::string_view comment, std::string_view expect) {
  const auto is_another = [expect](std::string_view note) {
    return note.data() != expect.data() && (IsExpect(note) || SeemsToExpect(note, true));
  };
  return !FindNote(comment, is_another).empty();
}

}  // namespace

std::string_view TrimWhitespace(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return text.substr(text.size());
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::string_view CommentOf(const ScriptLine& line) {
  const auto end = static_cast<std::size_t>(line.text.data() + line.text.size() - line.raw.data());
  return line.raw.substr(std::min(line.raw.find('#', end), line.raw.size()));
}

std::string_view FindExpect(std::string_view comment) {
  return FindNote(comment, IsExpect);
}

std::string_view LevelsIn(std::string_view expect) {
  return TrimWhitespace(expect.substr(kWord.size()));
}

std::optional<PinLevel> ReadPinLevel(std::string_view item) {
  const std::size_t equals = std::min(item.find('='), item.size());
  const unsigned pin = NamedItem(TrimWhitespace(item.substr(0, equals))).which;
  const std::string_view level = TrimWhitespace(item.substr(std::min(equals + 1, item.size())));
  if (pin >= kPinKeys || (level != "0" && level != "1")) return std::nullopt;
  return PinLevel{pin, level.data()};
}

std::optional<Expectation> ReadPinExpectation(const ScriptLine& line, Problems& problems) {
  const std::string_view comment = CommentOf(line);
  if (comment.empty()) return std::nullopt;
  const std::string_view expect = FindExpect(comment);
  if (expect.empty()) {
    ReportNearWord(line, comment, problems);
    return std::nullopt;
  }
  const std::string_view text = LevelsIn(expect);
  const Place place = line.Of(text.empty() ? expect : text);
  const std::optional<Levels> levels = ReadLevels(text);
  if (!levels.has_value()) {
    problems.Error(place, kForm);
  } else if (levels->mask == 0) {
    problems.Error(place, "a mask of 0 compares nothing");
  } else if (HasAnother(comment, expect)) {
    problems.Error(place, "this line has more than one expectation");
  } else {
    Expectation expectation{0, Expectation::Of::kPins, place, "", "", levels->mask != GPIO_PIN_ALL};
    expectation.value += static_cast<char>(levels->value);
    expectation.mask += static_cast<char>(levels->mask);
    return expectation;
  }
  return std::nullopt;
}

void ReportVainExpectation(const ScriptLine& line, Problems& problems) {
  const std::string_view comment = CommentOf(line);
  constexpr const char* kNoRead = "this line reads no pins, so nothing is compared";
  if (const std::string_view meant = FindMeant(comment, false); !meant.empty()) {
    problems.Error(line.Of(meant), kNoRead);
  } else if (const std::string_view expect = FindExpect(comment);
             expect.find('=') != std::string_view::npos) {  // may be a sentence, so only warn
    problems.WarnAlways(line.Of(expect), kNoRead);
  }
}

void WarnOfPinExpectation(const ScriptLine& line, Problems& problems) {
  const std::string_view comment = CommentOf(line);
  std::string_view meant = FindMeant(comment, false);
  if (const std::string_view expect = FindExpect(comment); meant.empty() && !expect.empty()) {
    const std::string_view text = LevelsIn(expect);
    // A number followed by other text may begin a sentence.
    const bool number = !text.empty() && text[0] >= '0' && text[0] <= '9' &&
                        text.find_first_of(" \t") == std::string_view::npos;
    if (number) meant = expect;
  }
  if (meant.empty()) return;
  problems.WarnAlways(line.Of(meant), "# expect has no effect in a JTAG script: use TDO and MASK");
}

}  // namespace icehost
