#include "host/check/check_scan.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <string>

#include "base/number.h"
#include "base/text.h"
#include "host/check/remarks.h"
#include "host/check/scan_fields.h"
#include "host/check/wide_numbers.h"
#include "jtag/jtag_scr.h"

namespace icehost {
namespace {

using icescript::CString;

bool IsDecimal(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// What a text that is no byte may have been meant to be: all bytes of a number, the least
// significant first.
std::string BytesMeant(std::string_view text) {
  if (const auto slip = SlipIn(text); !slip.empty()) return std::string(slip);
  std::string_view digits = HexDigits(text);
  if (digits.size() < 3 || digits.size() / 2 > JTAG_DR_MAX_BYTES || !IsHex(digits)) return {};
  std::string bytes;
  while (!digits.empty()) {
    const std::size_t rest = digits.size() - std::min<std::size_t>(digits.size(), 2);
    bytes += fmt::format("{}0x{:0>2}", bytes.empty() ? "" : ",", digits.substr(rest));
    digits = digits.substr(0, rest);
  }
  return DidYouMean(bytes);
}

// The length, in field `length_at`; false where nothing is shifted.
bool CheckLength(const Fields& fields, std::size_t length_at, int bits, Problems& problems) {
  const std::string_view text = Trimmed(fields.text[length_at]);
  if (bits < 0 && text == fmt::to_string(bits)) {
    problems.Warn(fields.Of(length_at), "a negative length shifts nothing");
  } else if (!IsDecimal(text)) {
    problems.Warn(fields.Of(length_at),
                  fmt::format("a length is a decimal number: \"{}\" is taken as {}{}", text, bits,
                              InParentheses(SlipIn(text))));
  } else if (IsCutNumber(text, 10)) {
    problems.Warn(fields.Of(length_at), CutNumber(text, 10));
  }
  return bits > 0;
}

// The bytes from field `first` on against the length in bits.
void CheckBytes(const Fields& fields, std::size_t first, int bits, Problems& problems) {
  const std::size_t listed = fields.text.size() - first;
  const auto held = static_cast<std::size_t>((bits + 7) / 8);
  for (std::size_t i = first; i < fields.text.size(); ++i) {
    const std::string_view text = Trimmed(fields.text[i]);
    if (IsHexByte(text)) continue;
    problems.Warn(fields.Of(i), fmt::format("\"{}\" is no hexadecimal byte: taken as 0x{:02x}{}",
                                            text, ByteOf(text), InParentheses(BytesMeant(text))));
  }
  if (listed > held) {
    problems.Warn(fields.Of(first + held), fmt::format("more bytes than the {} bits hold", bits));
  } else if (listed < held && listed > 0) {
    problems.Warn(fields.Of(first - 1),
                  fmt::format("{} bits need {} bytes, not {}: the rest is 0", bits, held, listed));
  } else if (listed == held && bits % 8 != 0 &&
             ByteOf(Trimmed(fields.text.back())) >> bits % 8 != 0) {
    problems.Warn(fields.Of(fields.text.size() - 1),
                  fmt::format("bits are set beyond the {} of the length", bits));
  }
}

void CheckFlag(const Fields& dr, Problems& problems) {
  const std::string_view flag = Trimmed(dr.text[0]);
  for (const std::string_view known : {"R", "W", "READ", "WRITE"}) {
    if (icescript::EqualsUpper(flag, known)) return;
  }
  const char first = flag.empty() ? '\0' : icescript::UpperCase(flag[0]);
  if (first == 'R' || first == 'W') {
    problems.Warn(dr.Of(0), fmt::format("\"{}\" is taken as a {}: the first letter alone counts",
                                        flag, first == 'R' ? "read" : "write"));
  } else {
    problems.Warn(dr.Of(0), fmt::format("\"{}\" is neither R nor W: taken as a write", flag));
  }
}

// Whether the parser refuses a register of this length or of so many bytes.
bool IsTooLong(const Fields& fields, std::size_t length_at) {
  const int bits = icescript::ParseNumber(Trimmed(fields.text[length_at]), 10);
  const std::size_t listed = fields.text.size() - length_at - 1;
  return bits > 8 * JTAG_DR_MAX_BYTES || (bits > JTAG_DR_MAX_BYTES && listed > JTAG_DR_MAX_BYTES);
}

// Why the parser refuses a value.
void ExplainRefusal(const Fields& fields, std::size_t length_at, const char* form,
                    Problems& problems) {
  const Place place = fields.line.Of(fields.value);
  if (fields.text.empty()) {
    problems.Error(place, form);
  } else if (IsTooLong(fields, length_at)) {
    problems.Error(place, "a register has at most 288 bits in 36 bytes");
  }
}

}  // namespace

std::unique_ptr<icescript::JtagOperatorData> CheckScan(const IniSection& section,
                                                       const ScriptLine& ir, const ScriptLine& dr,
                                                       Problems& problems) {
  const Fields ir_fields(ir);
  const Fields dr_fields(dr);
  icescript::JtagScr scr(nullptr, nullptr);  // reads no file, so it prints nothing
  std::unique_ptr<icescript::JtagOperatorData> record(
      scr.ParseJtagOperatorData(CString(ir_fields.value), CString(dr_fields.value)));
  if (record == nullptr) {
    problems.Error(section.first, fmt::format("{} syntax error", section.name));
    ExplainRefusal(ir_fields, 0, "IR is LENGTH,BYTE,...", problems);
    ExplainRefusal(dr_fields, 1, "DR is R or W,LENGTH,BYTE,...", problems);
    return nullptr;
  }
  CheckFlag(dr_fields, problems);
  if (CheckLength(ir_fields, 0, record->irBitLength, problems)) {
    CheckBytes(ir_fields, 1, record->irBitLength, problems);
  }
  if (CheckLength(dr_fields, 1, record->drBitLength, problems)) {
    CheckBytes(dr_fields, 2, record->drBitLength, problems);
  }
  return record;
}

}  // namespace icehost
