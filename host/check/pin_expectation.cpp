#include "host/check/pin_expectation.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "base/field_cursor.h"
#include "base/number.h"
#include "base/text.h"
#include "entry/icescript.h"
#include "host/check/gpio_items.h"
#include "host/check/near_words.h"
#include "host/check/remarks.h"

namespace icehost {
namespace {

constexpr std::string_view kWord = "expect";
constexpr std::string_view kForm =
    "expected is NAME=LEVEL, ... with the names of pins, or VALUE or VALUE/MASK up to 0x3f";

// Levels of pins, and which of them count.
struct Levels {
  int value = 0;
  int mask = 0;
};

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return text.substr(text.size());
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// The letters that a text begins with.
std::string_view FirstWord(std::string_view text) {
  const auto* const end = std::find_if(text.begin(), text.end(),
                                       [](unsigned char ch) { return std::isalpha(ch) == 0; });
  return text.substr(0, static_cast<std::size_t>(end - text.begin()));
}

// A number of pins, decimal or hexadecimal behind "0x"; none where it is something else.
std::optional<int> PinNumber(std::string_view text) {
  const bool hex = text.substr(0, 2) == "0x";
  const std::string_view digits = text.substr(hex ? 2 : 0);
  const char* const allowed = hex ? "0123456789abcdefABCDEF" : "0123456789";
  if (digits.empty() || digits.size() > 4) return std::nullopt;
  if (digits.find_first_not_of(allowed) != std::string_view::npos) return std::nullopt;
  const int number = icescript::ParseNumber(digits, hex ? 16 : 10);
  if (number > GPIO_PIN_ALL) return std::nullopt;
  return number;
}

std::optional<Levels> WordLevels(std::string_view text) {
  const std::size_t slash = std::min(text.find('/'), text.size());
  const std::optional<int> value = PinNumber(Trimmed(text.substr(0, slash)));
  const std::optional<int> mask =
      slash == text.size() ? GPIO_PIN_ALL : PinNumber(Trimmed(text.substr(slash + 1)));
  if (!value.has_value() || !mask.has_value()) return std::nullopt;
  return Levels{*value, *mask};
}

// NAME=LEVEL, no pin twice.
std::optional<Levels> NamedLevels(std::string_view text) {
  Levels levels;
  for (icescript::FieldCursor items(text, ','); items.HasNext();) {
    const std::string_view item = items.Next();
    const std::size_t equals = std::min(item.find('='), item.size());
    const std::string_view name = Trimmed(item.substr(0, equals));
    const std::string_view level = Trimmed(item.substr(std::min(equals + 1, item.size())));
    const unsigned pin = NamedItem(name).which;
    if (pin >= kPins || (level != "0" && level != "1")) return std::nullopt;
    const int bit = 1 << pin;
    if ((levels.mask & bit) != 0) return std::nullopt;
    levels.mask |= bit;
    if (level == "1") levels.value |= bit;
  }
  return levels;
}

std::optional<Levels> ReadLevels(std::string_view text) {
  return text.find('=') != std::string_view::npos ? NamedLevels(text) : WordLevels(text);
}

bool SaysExpect(std::string_view text) {
  return std::search(text.begin(), text.end(), kWord.begin(), kWord.end(),
                     [](char ch, char letter) {
                       return icescript::UpperCase(ch) == icescript::UpperCase(letter);
                     }) != text.end();
}

// What may have been meant as an expectation.
void WarnOfNearWord(const ScriptLine& line, std::string_view comment, Problems& problems) {
  icescript::FieldCursor notes(comment, '#');
  while (notes.HasNext()) {
    const std::string_view note = Trimmed(notes.Next());
    const std::string_view word = FirstWord(note);
    const bool near = !Nearest(word, {kWord}).empty() &&
                      ReadLevels(Trimmed(note.substr(word.size()))).has_value();
    if (!near && !SaysExpect(note)) continue;
    problems.Warn(line.Of(note), "nothing is expected here: " + DidYouMean("# expect ..."));
    return;
  }
}

// Behind the expectation that counts.
bool HasAnother(std::string_view behind) {
  const std::size_t mark = behind.find('#');
  return mark != std::string_view::npos && !ExpectIn(behind.substr(mark)).empty();
}

}  // namespace

std::string_view CommentOf(const ScriptLine& line) {
  const auto behind =
      static_cast<std::size_t>(line.text.data() + line.text.size() - line.raw.data());
  return line.raw.substr(std::min(line.raw.find('#', behind), line.raw.size()));
}

std::string_view ExpectIn(std::string_view comment) {
  icescript::FieldCursor notes(comment, '#');
  while (notes.HasNext()) {
    const std::string_view note = Trimmed(notes.Next());
    if (FirstWord(note) == kWord) return note;
  }
  return {};
}

std::optional<Expectation> PinExpectation(const ScriptLine& line, bool reads, Problems& problems) {
  const std::string_view comment = CommentOf(line);
  if (comment.empty()) return std::nullopt;
  const std::string_view expect = ExpectIn(comment);
  if (expect.empty()) {
    if (reads) WarnOfNearWord(line, comment, problems);
    return std::nullopt;
  }
  const std::string_view text = Trimmed(expect.substr(kWord.size()));
  const std::optional<Levels> levels = ReadLevels(text);
  if (!reads) {
    // It may be a sentence.
    constexpr const char* kNoRead = "nothing is read on this line";
    if (levels.has_value()) {
      problems.Error(line.Of(expect), kNoRead);
    } else if (text.find('=') != std::string_view::npos) {
      problems.Warn(line.Of(expect), kNoRead);
    }
    return std::nullopt;
  }
  const Place place = line.Of(text.empty() ? expect : text);
  const auto behind = static_cast<std::size_t>(expect.data() + expect.size() - comment.data());
  if (!levels.has_value()) {
    problems.Error(place, std::string(kForm));
  } else if (levels->mask == 0) {
    problems.Error(place, "a mask of 0 compares nothing");
  } else if (HasAnother(comment.substr(behind))) {
    problems.Error(place, "a line has one expectation, and this one has more");
  } else {
    return Expectation{0,
                       Expectation::Of::kPins,
                       place,
                       std::string(1, static_cast<char>(levels->value)),
                       std::string(1, static_cast<char>(levels->mask)),
                       levels->mask != GPIO_PIN_ALL};
  }
  return std::nullopt;
}

void WarnOfExpectation(const ScriptLine& line, Problems& problems) {
  const std::string_view expect = ExpectIn(CommentOf(line));
  if (expect.empty()) return;
  const std::string_view text = Trimmed(expect.substr(kWord.size()));
  // More than a number may be a sentence.
  const bool number = !text.empty() && text[0] >= '0' && text[0] <= '9' &&
                      text.find_first_of(" \t") == std::string_view::npos;
  if (!number && !ReadLevels(text).has_value()) return;
  problems.Warn(line.Of(expect), "a JTAG script says with TDO and MASK what it expects");
}

}  // namespace icehost
