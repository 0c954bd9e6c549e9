#include "host/check/jtag_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "base/field_cursor.h"
#include "base/number.h"
#include "base/text.h"
#include "host/check/hints.h"

namespace icehost {
namespace {

using icescript::CString;

// ---- The fields of a value

// Returns a field without spaces at its ends. Tabs count as text.
std::string_view TrimSpaces(std::string_view field) {
  return icescript::TrimRight(icescript::TrimLeft(field, ' '), ' ');
}

// A value, split into fields as the parser splits it. `line` must outlive the object.
struct Fields {
  explicit Fields(const ScriptLine& at) : line(at), value(ValueOf(at)) {
    if (value.find(',') == std::string_view::npos) return;
    for (icescript::FieldCursor fields(value, ','); fields.HasNext();) {
      text.push_back(fields.Next());
    }
  }

  Place Of(std::size_t i) const {
    const std::size_t blanks = text[i].find_first_not_of(' ');
    return line.Of(text[i].substr(blanks != std::string_view::npos ? blanks : 0));
  }

  const ScriptLine& line;
  std::string_view value;
  std::vector<std::string_view> text;  // empty if the value contains no comma
};

std::string_view HexDigits(std::string_view text) {
  const bool prefixed = text.size() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  return text.substr(prefixed ? 2 : 0);
}

// Returns whether a text is one or two hexadecimal digits, with or without "0x".
bool IsHexByte(std::string_view text) {
  const std::string_view digits = HexDigits(text);
  return digits.size() <= 2 && IsDigits(digits, 16);
}

// Returns the byte that the parser reads from a text.
unsigned ByteOf(std::string_view text) {
  return static_cast<unsigned>(icescript::ParseNumber(HexDigits(text), 16)) & 0xFF;
}

std::size_t BytesOf(int bits) {
  return static_cast<std::size_t>((bits + 7) / 8);
}

// ---- IR and DR

// Returns a hint about a wrong byte. Splits a long number into bytes, least significant byte first.
std::string BytesMeant(std::string_view text) {
  if (const auto slip = SlipIn(text); !slip.empty()) return std::string(slip);
  std::string_view digits = HexDigits(text);
  if ((digits.size() + 1) / 2 > JTAG_DR_MAX_BYTES || !IsDigits(digits, 16)) return {};
  std::string bytes;
  while (!digits.empty()) {
    const std::size_t rest = digits.size() - std::min<std::size_t>(digits.size(), 2);
    bytes += fmt::format("{}0x{:0>2}", bytes.empty() ? "" : ",", digits.substr(rest));
    digits = digits.substr(0, rest);
  }
  return DidYouMean(bytes);
}

// Checks the length in field `length_at`, which the plug-in reads as `bits`. Returns whether any
// bits are shifted.
bool CheckLength(const Fields& fields, std::size_t length_at, int bits, Problems& problems) {
  const std::string_view text = TrimSpaces(fields.text[length_at]);
  if (bits < 0 && text == fmt::to_string(bits)) {
    problems.Warn(fields.Of(length_at), "a negative length shifts nothing");
  } else if (!IsDigits(text, 10)) {
    problems.Warn(fields.Of(length_at),
                  fmt::format("a length must be a decimal number: the plug-in reads \"{}\" as {}{}",
                              text, bits, InParentheses(SlipIn(text))));
  } else if (std::string cut = CutNumber(text, 10); !cut.empty()) {
    problems.Warn(fields.Of(length_at), std::move(cut));
  }
  return bits > 0;
}

// Checks the bytes in field `first` and later fields against a length of `bits`.
void CheckBytes(const Fields& fields, std::size_t first, int bits, Problems& problems) {
  const std::size_t listed = fields.text.size() - first;
  const std::size_t held = BytesOf(bits);
  for (std::size_t i = first; i < fields.text.size(); ++i) {
    const std::string_view text = TrimSpaces(fields.text[i]);
    if (IsHexByte(text)) continue;
    problems.Warn(
        fields.Of(i),
        fmt::format("\"{}\" is not a hexadecimal byte: the plug-in reads it as 0x{:02x}{}", text,
                    ByteOf(text), InParentheses(BytesMeant(text))));
  }
  if (listed > held) {
    problems.Warn(fields.Of(first + held), fmt::format("too many bytes for {} bits", bits));
  } else if (listed < held && listed > 0) {
    problems.Warn(fields.Of(first - 1),
                  fmt::format("{} bits need {} bytes, found {}: the missing bytes are 0", bits,
                              held, listed));
  } else if (listed == held && bits % 8 != 0 &&
             ByteOf(TrimSpaces(fields.text.back())) >> bits % 8 != 0) {
    problems.Warn(fields.Of(fields.text.size() - 1),
                  fmt::format("bits are set beyond the length of {} bits", bits));
  }
}

void CheckFlag(const Fields& dr, Problems& problems) {
  const std::string_view flag = TrimSpaces(dr.text[0]);
  for (const std::string_view known : {"R", "W", "READ", "WRITE"}) {
    if (icescript::EqualsUpper(flag, known)) return;
  }
  const char first = flag.empty() ? '\0' : icescript::UpperCase(flag[0]);
  if (first == 'R' || first == 'W') {
    problems.Warn(dr.Of(0), fmt::format("\"{}\" is taken as a {}: only the first letter counts",
                                        flag, first == 'R' ? "read" : "write"));
  } else {
    problems.Warn(dr.Of(0), fmt::format("expected R or W: \"{}\" is taken as a write", flag));
  }
}

// Returns whether the parser refuses a register because of its length or its number of bytes.
bool IsTooLong(const Fields& fields, std::size_t length_at) {
  const int bits = icescript::ParseNumber(TrimSpaces(fields.text[length_at]), 10);
  const std::size_t listed = fields.text.size() - length_at - 1;
  return bits > 8 * JTAG_DR_MAX_BYTES || (bits > JTAG_DR_MAX_BYTES && listed > JTAG_DR_MAX_BYTES);
}

void ExplainRefusal(const Fields& fields, std::size_t length_at, const char* form,
                    Problems& problems) {
  const Place place = fields.line.Of(fields.value);
  if (fields.text.empty()) {
    problems.Error(place, form);
  } else if (IsTooLong(fields, length_at)) {
    problems.Error(place, "a register can have at most 288 bits (36 bytes)");
  }
}

// ---- Expectations

// Reads exactly the bytes that `bits` bits need. On any error, reports it and returns nothing.
std::optional<std::string> ReadBytes(const ScriptLine& line, int bits, Problems& problems) {
  const std::size_t held = BytesOf(bits);
  std::string bytes;
  for (icescript::FieldCursor fields(ValueOf(line), ','); fields.HasNext();) {
    const std::string_view field = TrimSpaces(fields.Next());
    if (!IsHexByte(field)) {
      problems.Error(line.Of(field), fmt::format("\"{}\" is not a hexadecimal byte", field));
      return std::nullopt;
    }
    if (bytes.size() == held) {
      problems.Error(line.Of(field), fmt::format("too many bytes for {} bits", bits));
      return std::nullopt;
    }
    bytes += static_cast<char>(ByteOf(field));
  }
  if (bytes.size() == held) return bytes;
  problems.Error(line.Of(ValueOf(line)),
                 fmt::format("{} bits need {} bytes, found {}", bits, held, bytes.size()));
  return std::nullopt;
}

std::string WholeMask(int bits) {
  std::string mask(BytesOf(bits), '\xFF');
  if (bits % 8 != 0) mask.back() = static_cast<char>((1 << bits % 8) - 1);
  return mask;
}

// Returns whether a register of `bits` bits can be compared. If not, reports why.
bool CanCompare(const ScriptLine& line, ScanKey value_key, int bits, Problems& problems) {
  if (bits <= 0) {
    problems.Error(line.Start(), "no bits are shifted, so there is no value to compare");
    return false;
  }
  if (value_key == kIrTdo && bits > kMostCapturedIrBits) {
    problems.Error(line.Start(), "a captured IR of more than 16 bits cannot be compared");
    return false;
  }
  return true;
}

std::optional<std::string> ReadValue(const ScriptLine& line, int bits, Problems& problems) {
  std::optional<std::string> value = ReadBytes(line, bits, problems);
  if (!value.has_value() || (value->back() & ~WholeMask(bits).back()) == 0) return value;
  problems.Error(line.Of(ValueOf(line)),
                 fmt::format("bits are set beyond the length of {} bits", bits));
  return std::nullopt;
}

// Reads a mask and clears its bits beyond the end of the register. Reports a mask of 0.
std::optional<std::string> ReadMask(const ScriptLine& line, int bits, Problems& problems) {
  std::optional<std::string> mask = ReadBytes(line, bits, problems);
  if (!mask.has_value()) return std::nullopt;
  mask->back() = static_cast<char>(mask->back() & WholeMask(bits).back());
  if (mask->find_first_not_of('\0') != std::string::npos) return mask;
  problems.Error(line.Of(ValueOf(line)), "a mask of 0 compares nothing");
  return std::nullopt;
}

// ---- CONTROL

std::string_view WithoutZeros(std::string_view number) {
  return number.substr(std::min(number.find_first_not_of('0'), number.size()));
}

}  // namespace

std::string_view ValueOf(const ScriptLine& line) {
  return line.text.substr(line.text.find('=') + 1);
}

void CheckReset(const ScriptLine& reset, Problems& problems) {
  const std::string_view value = TrimSpaces(ValueOf(reset));
  bool denied = WithoutZeros(value).empty();
  for (const std::string_view no : {"N", "NO", "OFF", "FALSE"}) {
    denied = denied || icescript::EqualsUpper(value, no);
  }
  if (denied) {
    problems.Warn(reset.Start(), "this resets the target, whatever the value of RESET is");
  }
}

void CheckCdi(const ScriptLine& cdi, Problems& problems) {
  const std::string_view value = ValueOf(cdi);
  const int taken = icescript::ParseNumber(value, 10);
  if (WithoutZeros(TrimSpaces(value)) == fmt::to_string(taken)) return;
  problems.Warn(cdi.Of(value), fmt::format("CDI must be 5 or 2: the plug-in reads \"{}\" as {}{}",
                                           value, taken, InParentheses(SlipIn(value))));
}

std::unique_ptr<icescript::JtagOperatorData> CheckScan(const IniSection& section,
                                                       const ScriptLine& ir, const ScriptLine& dr,
                                                       Problems& problems) {
  const Fields ir_fields(ir);
  const Fields dr_fields(dr);
  icescript::JtagScr scr(nullptr, nullptr);  // reads no file and prints nothing
  std::unique_ptr<icescript::JtagOperatorData> record(
      scr.ParseJtagOperatorData(CString(ir_fields.value), CString(dr_fields.value)));
  if (record == nullptr) {
    problems.Error(section.first, fmt::format("{} syntax error", section.name));
    ExplainRefusal(ir_fields, 0, "expected IR=LENGTH,BYTE,...", problems);
    ExplainRefusal(dr_fields, 1, "expected DR=R,LENGTH,BYTE,... or DR=W,LENGTH,BYTE,...", problems);
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

std::optional<Expectation> ReadScanExpectation(const ScriptText& script, const IniSection& section,
                                               ScanKey value_key, int bits, Problems& problems) {
  const int value_at = section.lines[value_key];
  const int mask_at = section.lines[value_key + 1];
  if (value_at == 0) {
    if (mask_at == 0) return std::nullopt;
    const IniKeys& keys = KeysOf(section.name);
    problems.Error(script.Line(mask_at).Start(), fmt::format("{} without {}: nothing is compared",
                                                             keys[value_key + 1], keys[value_key]));
    return std::nullopt;
  }
  const ScriptLine line = script.Line(value_at);
  if (!CanCompare(line, value_key, bits, problems)) return std::nullopt;
  std::optional<std::string> value = ReadValue(line, bits, problems);
  std::optional<std::string> mask = WholeMask(bits);
  if (mask_at != 0) mask = ReadMask(script.Line(mask_at), bits, problems);
  if (!value.has_value() || !mask.has_value()) return std::nullopt;
  const auto of = value_key == kDrTdo ? Expectation::Of::kDr : Expectation::Of::kIr;
  return Expectation{0,           of, line.Of(ValueOf(line)), std::move(*value), std::move(*mask),
                     mask_at != 0};
}

}  // namespace icehost
