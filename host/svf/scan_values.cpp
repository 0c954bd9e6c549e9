#include "host/svf/scan_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

namespace icehost {
namespace {

static_assert(JTAG_IR_MAX_BYTES == JTAG_DR_MAX_BYTES);

// The first word, in bits.
std::optional<std::size_t> LengthOf(const SvfStatement& statement, Problems& problems) {
  if (statement.words.empty()) {
    problems.Error(statement.keyword.place,
                   fmt::format("{} lacks its length", Quoted(statement.keyword)));
    return std::nullopt;
  }
  const SvfToken& word = statement.words[0];
  std::size_t length = 0;
  const auto [end, error] =
      std::from_chars(word.text.data(), word.text.data() + word.text.size(), length);
  if (word.kind != SvfToken::Kind::kWord || error == std::errc::invalid_argument ||
      end != word.text.data() + word.text.size()) {
    problems.Error(word.place, fmt::format("{} is no length in bits", Quoted(word)));
    return std::nullopt;
  }
  if (error == std::errc() && length <= kMostSvfBits) return length;
  problems.Error(word.place, fmt::format("a script's register has at most {} bits", kMostSvfBits));
  return std::nullopt;
}

}  // namespace

bool SvfShift::Compares() const {
  return std::find(mask.begin(), mask.end(), true) != mask.end();
}

void SvfShift::Append(const SvfShift& more) {
  tdi.insert(tdi.end(), more.tdi.begin(), more.tdi.end());
  tdo.insert(tdo.end(), more.tdo.begin(), more.tdo.end());
  mask.insert(mask.end(), more.mask.begin(), more.mask.end());
}

bool SvfRegister::ReadValues(const SvfStatement& statement, std::size_t length, Values& values,
                             Problems& problems) {
  constexpr const char* kNames[kParameters] = {"TDI", "TDO", "MASK", "SMASK"};
  const auto& words = statement.words;
  for (std::size_t i = 1; i < words.size(); i += 2) {
    const auto* const name =
        std::find_if(std::begin(kNames), std::end(kNames),
                     [&words, i](const char* known) { return IsSvfWord(words[i], known); });
    if (name == std::end(kNames)) {
      problems.Error(words[i].place,
                     fmt::format("{} is none of TDI, TDO, MASK and SMASK", Quoted(words[i])));
      return false;
    }
    std::optional<Bits>& value = values[name - std::begin(kNames)];
    if (value.has_value()) {
      problems.Error(words[i].place, fmt::format("{} is given twice", *name));
      return false;
    }
    if (i + 1 == words.size() || words[i + 1].kind != SvfToken::Kind::kValue) {
      problems.Error(words[i].place, fmt::format("{} lacks its value in parentheses", *name));
      return false;
    }
    value = SvfBits(words[i + 1], length, problems);
    if (!value.has_value()) return false;
  }
  return true;
}

std::optional<SvfShift> SvfRegister::Take(const SvfStatement& statement, Problems& problems) {
  const auto length = LengthOf(statement, problems);
  if (!length.has_value()) return std::nullopt;
  const bool is_new = *length != length_;
  if (is_new) {
    length_ = *length;
    tdi_.assign(length_, false);
    mask_.assign(length_, true);
  }
  Values values;
  if (!ReadValues(statement, length_, values, problems)) return std::nullopt;
  if (is_new && length_ > 0 && !values[kTdi].has_value()) {
    problems.Error(
        statement.keyword.place,
        fmt::format("{} has another length than before, and no TDI", Quoted(statement.keyword)));
    return std::nullopt;
  }
  tdi_ = values[kTdi].value_or(tdi_);
  mask_ = values[kMask].value_or(mask_);
  const bool compares = values[kTdo].has_value();
  return SvfShift{tdi_, compares ? *values[kTdo] : Bits(length_), compares ? mask_ : Bits(length_)};
}

}  // namespace icehost
