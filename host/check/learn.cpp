#include "host/check/learn.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "base/field_cursor.h"
#include "entry/icescript.h"
#include "host/check/gpio_items.h"
#include "host/check/jtag_values.h"
#include "host/check/pin_expectation.h"
#include "host/target/bits.h"

namespace icehost {
namespace {

using Of = Expectation::Of;
using Texts = std::vector<std::string_view>;

// A number in a comment counts as a register value if it has "0x" or at least this many digits.
constexpr std::size_t kFewestBareDigits = 4;

Texts SplitAtCommas(std::string_view text) {
  Texts fields;
  for (icescript::FieldCursor cursor(text, ','); cursor.HasNext();) fields.push_back(cursor.Next());
  return fields;
}

std::string_view WithoutPrefix(std::string_view number) {
  const bool prefixed = number.size() > 1 && number[0] == '0' && (number[1] | ' ') == 'x';
  return number.substr(prefixed ? 2 : 0);
}

// The style of an author's hexadecimal numbers. `prefix` may be empty, and `digits` is a minimum.
struct NumberForm {
  std::string prefix = "0x";
  std::size_t digits = 2;
  bool upper_case = false;

  std::string Text(unsigned number) const {
    return prefix + (upper_case ? fmt::format("{:0{}X}", number, digits)
                                : fmt::format("{:0{}x}", number, digits));
  }
};

// Returns the form of these numbers. If any number has a prefix, ignores the numbers without a
// prefix, most of which are zeros.
NumberForm FormOf(const Texts& numbers) {
  NumberForm form;
  std::size_t digits = 0;
  for (const bool prefixed : {true, false}) {
    for (const std::string_view field : numbers) {
      const std::string_view number = TrimWhitespace(field);
      const std::string_view bare = WithoutPrefix(number);
      if (bare.empty() || (bare.size() < number.size()) != prefixed) continue;
      form.prefix = number.substr(0, number.size() - bare.size());
      digits = std::min(digits == 0 ? bare.size() : digits, bare.size());
      form.upper_case |= std::any_of(bare.begin(), bare.end(),
                                     [](unsigned char ch) { return std::isupper(ch) != 0; });
    }
    if (digits != 0) break;
  }
  if (digits != 0) form.digits = digits;
  return form;
}

// Returns a list of the bytes in this form, with the same blanks after commas as `fields`.
std::string ListOf(std::string_view bytes, NumberForm form, const Texts& fields) {
  // A byte of IR or DR may have more than two digits, but a byte of an expectation may not.
  form.digits = std::min<std::size_t>(form.digits, 2);
  std::string comma = ",";
  if (fields.size() > 1)
    comma.append(std::min(fields[1].find_first_not_of(' '), fields[1].size()), ' ');
  std::string list;
  for (const char byte : bytes) {
    list += (list.empty() ? "" : comma) + form.Text(static_cast<unsigned char>(byte));
  }
  return list;
}

// Returns "NAME=LEVEL,..." with the levels from `value`, but only for the pins in `counted`.
std::string WithLevels(std::string_view text, int value, int counted) {
  std::string levels;
  for (const std::string_view field : SplitAtCommas(text)) {
    const PinLevel item = *ReadPinLevel(field);
    if ((counted >> item.pin & 1) == 0) continue;
    std::string kept = (levels.empty() ? "" : ",") + std::string(field);
    kept[kept.size() - static_cast<std::size_t>(field.data() + field.size() - item.level)] =
        (value >> item.pin & 1) != 0 ? '1' : '0';
    levels += levels.empty() ? TrimWhitespace(kept) : std::string_view(kept);
  }
  return levels;
}

// Returns `word` as a number in the form of `text`, which is decimal or hexadecimal.
std::string WordLike(std::string_view text, int word) {
  if (WithoutPrefix(text).size() == text.size()) return fmt::format("{}", word);
  return FormOf({text}).Text(static_cast<unsigned>(word));
}

// Returns "VALUE" or "VALUE/MASK" in the form of `text`. `counted` is the mask.
std::string WithWord(std::string_view text, int value, int counted) {
  const std::size_t slash = std::min(text.find('/'), text.size());
  const std::string_view old = TrimWhitespace(text.substr(0, slash));
  const std::string word = WordLike(old, value & counted);
  if (slash == text.size()) {
    return counted == GPIO_PIN_ALL ? word : fmt::format("{}/{}", word, WordLike(old, counted));
  }
  const std::string_view mask = TrimWhitespace(text.substr(slash + 1));
  const auto between =
      text.substr(old.size(), static_cast<std::size_t>(mask.data() - text.data()) - old.size());
  return fmt::format("{}{}{}", word, between, WordLike(mask, counted));
}

// ---- Comments

// Returns whether a word of a comment is the register value `value`, written as a number.
bool IsValue(std::string_view word, std::string_view value) {
  word.remove_prefix(word.rfind('=') + 1);  // for words such as "id=0x1"
  std::string digits(WithoutPrefix(word));
  if (digits.size() == word.size() && digits.size() < kFewestBareDigits) return false;
  digits.erase(std::remove(digits.begin(), digits.end(), '_'), digits.end());
  std::transform(digits.begin(), digits.end(), digits.begin(),
                 [](unsigned char ch) { return static_cast<char>(std::tolower(ch)); });
  const std::string number = ByteText(value);
  const auto significant = [](std::string_view text) {
    return text.substr(std::min(text.find_first_not_of('0'), text.size()));
  };
  return !digits.empty() && significant(digits) == significant(std::string_view(number).substr(2));
}

// Calls `function` with each word of a comment. Words consist of letters, digits, "_" and "=".
template <class Function>
void ForEachWord(std::string_view comment, Function function) {
  const auto belongs = [](unsigned char ch) {
    return std::isalnum(ch) != 0 || ch == '_' || ch == '=';
  };
  const auto* at = comment.begin();
  while (at != comment.end()) {
    const auto* const begin = std::find_if(at, comment.end(), belongs);
    at = std::find_if_not(begin, comment.end(), belongs);
    if (begin == at) continue;
    function(comment.substr(static_cast<std::size_t>(begin - comment.begin()),
                            static_cast<std::size_t>(at - begin)));
  }
}

class Learner {
 public:
  Learner(const ScriptText& script, const Plan& plan) : script_(script), plan_(plan) {}

  void Take(std::size_t operation, Of of, const Capture& capture) {
    const Expectation* const known = plan_.Expected(operation, of);
    if (known != nullptr && IsMet(*known, capture)) return;
    if (of == Of::kPins) {
      TakePins(static_cast<int>(plan_.pins[operation].line), known, capture);
    } else if (known != nullptr) {
      Replace(*known, capture.value);
    } else if (of == Of::kDr && plan_.jtag[operation].reads && !capture.value.empty()) {
      Insert(plan_.jtag[operation], capture.value);
    }
  }

  Learned Finish() {
    std::string learned;
    std::size_t kept = 0;
    for (const auto& [at, edit] : edits_) {
      learned.append(script_.Content(), kept, at - kept).append(edit.text);
      kept = at + edit.replaced;
    }
    learned.append(script_.Content(), kept);
    stale_.Sort();
    return {std::move(learned), std::move(stale_)};
  }

 private:
  struct Change {
    std::size_t replaced;
    std::string text;
  };

  void Edit(std::string_view replaced, std::string text) {
    const auto at = static_cast<std::size_t>(replaced.data() - script_.Content().data());
    edits_[at] = {replaced.size(), std::move(text)};
  }

  void Replace(const Expectation& known, std::string_view value) {
    const ScriptLine line = script_.Line(known.place.line);
    const std::string_view old = TrimWhitespace(ValueOf(line));
    const Texts fields = SplitAtCommas(old);
    Edit(old, ListOf(value, FormOf(fields), fields));
    ForEachWord(CommentOf(line), [&](std::string_view word) {
      if (IsValue(word, known.value)) WarnOfWord(line, word, ByteText(value));
    });
  }

  // Adds a TDO= line below the DR line, with the same indentation.
  void Insert(const JtagOperation& operation, std::string_view value) {
    const ScriptLine line = script_.Line(operation.line);
    const bool returns = !line.raw.empty() && line.raw.back() == '\r';
    const std::string_view indentation =
        line.raw.substr(0, static_cast<std::size_t>(line.text.data() - line.raw.data()));
    // In DR, two fields precede the bytes: R or W, and the length. In IR, only the length does.
    Texts fields = SplitAtCommas(ValueOf(line));
    fields.erase(fields.begin(),
                 fields.begin() + std::min<std::ptrdiff_t>(2, fields.end() - fields.begin()));
    Texts all = fields;
    const Texts ir = SplitAtCommas(ValueOf(script_.Line(operation.ir_line)));
    all.insert(all.end(), ir.begin() + std::min<std::ptrdiff_t>(1, ir.end() - ir.begin()),
               ir.end());
    const std::string learned =
        fmt::format("\n{}TDO={}", indentation, ListOf(value, FormOf(all), fields));
    // If the DR line ends with a carriage return, the new line ends with one, too.
    Edit(line.raw.substr(line.raw.size() - (returns ? 1 : 0), 0), (returns ? "\r" : "") + learned);
  }

  void TakePins(int number, const Expectation* known, const Capture& capture) {
    const ScriptLine line = script_.Line(number);
    const std::string_view comment = CommentOf(line);
    const int steady = capture.steady[0] & GPIO_PIN_ALL;
    const int value = capture.value[0] & steady;
    if (known != nullptr) return ReplaceLevels(line, *known, value, steady & known->mask[0]);
    if (steady == 0) return;
    const std::string learned = fmt::format("# expect 0x{:02x}/0x{:02x}", value, steady);
    if (!comment.empty()) {
      Edit(comment.substr(0, 0), learned + " ");
    } else {
      Edit(line.text.substr(line.text.size(), 0), "  " + learned);
    }
  }

  void ReplaceLevels(const ScriptLine& line, const Expectation& known, int value, int counted) {
    const std::string_view comment = CommentOf(line);
    const std::string_view expect = FindExpect(comment);
    const std::string_view levels = LevelsIn(expect);
    const bool named = levels.find('=') != std::string_view::npos;
    if (counted == 0) {
      Edit(expect, "the levels change");
    } else {
      Edit(levels, named ? WithLevels(levels, value, counted) : WithWord(levels, value, counted));
    }
    const int wrong = (known.value[0] ^ value) & counted;
    ForEachWord(comment, [&](std::string_view word) {
      if (word.data() >= levels.data() && word.data() < levels.data() + levels.size()) return;
      const std::optional<PinLevel> item = ReadPinLevel(word);
      if (item.has_value() ? (wrong >> item->pin & 1) != 0 &&
                                 (*item->level == '1') != ((value >> item->pin & 1) != 0)
                           : IsValue(word, known.value)) {
        WarnOfWord(line, word, fmt::format("0x{:02x}", value));
      }
    });
  }

  void WarnOfWord(const ScriptLine& line, std::string_view word, const std::string& value) {
    stale_.WarnAlways(line.Of(word),
                      fmt::format("the comment still says {}, but {} was read", word, value));
  }

  const ScriptText& script_;
  const Plan& plan_;
  std::map<std::size_t, Change> edits_;  // the changes by their offsets in the script
  Problems stale_;
};

}  // namespace

Learned Learn(const ScriptText& script, const Plan& plan, const Captures& captures) {
  Learner learner(script, plan);
  for (const auto& [what, capture] : captures) learner.Take(what.first, what.second, capture);
  return learner.Finish();
}

}  // namespace icehost
