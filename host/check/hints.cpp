#include "host/check/hints.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <system_error>

#include "base/number.h"
#include "base/text.h"

namespace icehost {
namespace {

// Words longer than this never count as similar.
constexpr std::size_t kLongest = 32;

// Maps characters that look alike, such as 0 and O, to the same letter.
char Shape(char ch) {
  switch (const char upper = icescript::UpperCase(ch)) {
    case '0':
      return 'O';
    case '1':
    case 'L':
      return 'I';
    default:
      return upper;
  }
}

// Returns how many typing mistakes separate two words of at most kLongest bytes each.
std::size_t Slips(std::string_view a, std::string_view b) {
  std::array<std::array<std::size_t, kLongest + 1>, 3> rows{};
  for (std::size_t j = 0; j <= b.size(); ++j) rows[0][j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    const auto& above = rows[(i - 1) % 3];
    auto& row = rows[i % 3];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t change = Shape(a[i - 1]) == Shape(b[j - 1]) ? 0 : 1;
      row[j] = std::min({above[j - 1] + change, above[j] + 1, row[j - 1] + 1});
      if (i > 1 && j > 1 && Shape(a[i - 1]) == Shape(b[j - 2]) &&
          Shape(a[i - 2]) == Shape(b[j - 1])) {
        row[j] = std::min(row[j], rows[(i - 2) % 3][j - 2] + 1);
      }
    }
  }
  return rows[a.size() % 3][b.size()];
}

// Returns how many typing mistakes are allowed in a word of this size.
std::size_t Forgiven(std::size_t size) {
  return size < 6 ? 1 : 2;
}

}  // namespace

std::string Listed(const Words& words, std::string_view last) {
  std::string list;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i > 0 && i + 1 < words.size()) list += ", ";
    if (i > 0 && i + 1 == words.size()) list.append(" ").append(last).append(" ");
    list += words[i];
  }
  return list;
}

std::string Nearest(std::string_view word, const Words& candidates) {
  Words nearest;
  std::size_t fewest = kLongest;
  for (const std::string_view candidate : candidates) {
    const std::size_t forgiven = Forgiven(candidate.size());
    if (candidate.size() > kLongest || word.size() > kLongest || word.size() <= forgiven ||
        word.size() > candidate.size() + forgiven || candidate.size() > word.size() + forgiven) {
      continue;
    }
    const std::size_t slips = Slips(word, candidate);
    if (slips > std::min(forgiven, fewest)) continue;
    if (slips < fewest) nearest.clear();
    fewest = slips;
    nearest.push_back(candidate);
  }
  return Listed(nearest, "or");
}

std::string WithEquals(std::string_view text, const Words& keys) {
  const std::size_t end = text.find_first_of(" :\t0123456789");
  const std::size_t value = text.find_first_not_of(" :\t", end);
  if (value == std::string_view::npos) return {};
  for (const std::string_view key : keys) {
    if (icescript::EqualsUpper(text.substr(0, end), key)) {
      return std::string(key).append("=").append(text.substr(value));
    }
  }
  return {};
}

std::size_t FindForeignComment(std::string_view text) {
  return std::min(text.find(';'), text.find("//"));
}

std::string_view SlipIn(std::string_view text) {
  if (text.substr(0, 3) == "\xEF\xBB\xBF") return "the text begins with a byte-order mark";
  if (FindForeignComment(text) != std::string_view::npos) return "comments start with #";
  if (!text.empty() && (text.front() == '\t' || text.back() == '\t')) return kTabIsText;
  return {};
}

std::string InParentheses(std::string_view remark) {
  return remark.empty() ? "" : std::string(" (").append(remark).append(")");
}

std::string DidYouMean(std::string_view what) {
  return what.empty() ? "" : std::string("did you mean ").append(what).append("?");
}

bool IsDigits(std::string_view text, int base) {
  const auto is_digit = [base](char ch) {
    const char upper = icescript::UpperCase(ch);
    return (ch >= '0' && ch <= '9') || (base == 16 && upper >= 'A' && upper <= 'F');
  };
  return !text.empty() && std::all_of(text.begin(), text.end(), is_digit);
}

std::string CutNumber(std::string_view text, int base) {
  if (text.size() < 8) return {};  // short enough to fit in an int
  std::string_view digits = text.substr(std::min(text.find_first_not_of(" \t"), text.size()));
  if (digits.substr(0, 1) == "+") digits.remove_prefix(1);
  if (base == 16 && digits.substr(0, 2) == "0x") digits.remove_prefix(2);
  long number = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
  using Kept = std::numeric_limits<int>;
  if (result.ec != std::errc::result_out_of_range && number <= Kept::max() &&
      number >= Kept::min()) {
    return {};
  }
  return fmt::format("{} is too large: the plug-in reads it as {}", text,
                     icescript::ParseNumber(text, base));
}

}  // namespace icehost
