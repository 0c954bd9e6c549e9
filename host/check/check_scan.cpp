#include "host/check/check_scan.h"

#include <memory>
#include <vector>

#include "base/ini_file.h"
#include "base/number.h"
#include "base/text.h"
#include "jtag/jtag_scr.h"

namespace icehost {
namespace {

using icescript::CIniFile;
using icescript::CString;

// One value as the parser splits it.
struct Fields {
  Fields(const CString& value, const ValuePlace& place) : line(*place.line), at(place.at) {
    int count = 0;
    const std::unique_ptr<CString[]> split(CIniFile::SplitString(value, ',', count));
    for (int i = 0; split != nullptr && i < count; ++i) {
      text.push_back(split[static_cast<std::size_t>(i)]);
    }
  }

  // Column of field i.
  int Column(std::size_t i) const {
    std::size_t position = at;
    for (std::size_t before = 0; before < i; ++before) position += text[before].Text().size() + 1;
    const std::size_t blanks = text[i].Text().find_first_not_of(' ');
    return line.ColumnAt(position + (blanks != std::string::npos ? blanks : 0));
  }

  const ScriptLine& line;
  std::size_t at;
  std::vector<CString> text;
};

std::string_view Trimmed(const CString& field) {
  return icescript::TrimRight(icescript::TrimLeft(field.Text(), ' '), ' ');
}

std::string Quoted(std::string_view text) {
  return "\"" + std::string(text) + "\"";
}

bool IsDecimal(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// One or two digits behind an optional "0x".
bool IsHexByte(std::string_view text) {
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X'))
    text.remove_prefix(2);
  return !text.empty() && text.size() <= 2 &&
         text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

// What the parser makes of a byte.
unsigned ByteOf(std::string_view text) {
  if (text.size() > 1 && (text[1] == 'x' || text[1] == 'X')) text.remove_prefix(2);
  return static_cast<unsigned>(icescript::ParseNumber(text, 16)) & 0xFF;
}

// The length, in field `length_at`; false where nothing is shifted.
bool CheckLength(const Fields& fields, std::size_t length_at, int bits, Problems& problems) {
  const std::string_view text = Trimmed(fields.text[length_at]);
  if (text == std::to_string(bits) && bits < 0) {
    problems.Warn(fields.line, fields.Column(length_at), "a negative length shifts nothing");
  } else if (!IsDecimal(text)) {
    problems.Warn(
        fields.line, fields.Column(length_at),
        "a length is a decimal number: " + Quoted(text) + " is taken as " + std::to_string(bits));
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
    problems.Warn(
        fields.line, fields.Column(i),
        Quoted(text) + " is no hexadecimal byte: taken as " + std::to_string(ByteOf(text)));
  }
  if (listed > held) {
    problems.Warn(fields.line, fields.Column(first + held),
                  "more bytes than the " + std::to_string(bits) + " bits hold");
  } else if (listed < held && listed > 0) {
    problems.Warn(fields.line, fields.Column(first - 1),
                  std::to_string(bits) + " bits need " + std::to_string(held) + " bytes, not " +
                      std::to_string(listed) + ": the rest is 0");
  } else if (listed == held && bits % 8 != 0 &&
             ByteOf(Trimmed(fields.text.back())) >> bits % 8 != 0) {
    problems.Warn(fields.line, fields.Column(fields.text.size() - 1),
                  "bits are set beyond the " + std::to_string(bits) + " of the length");
  }
}

void CheckFlag(const Fields& dr, Problems& problems) {
  const std::string_view flag = Trimmed(dr.text[0]);
  if (!flag.empty() && std::string_view("RrWw").find(flag[0]) != std::string_view::npos) return;
  problems.Warn(dr.line, dr.Column(0), Quoted(flag) + " is neither R nor W: taken as a write");
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
  const int column = fields.line.ColumnAt(fields.at);
  if (fields.text.empty()) {
    problems.Error(fields.line, column, form);
  } else if (IsTooLong(fields, length_at)) {
    problems.Error(fields.line, column, "a register has at most 288 bits in 36 bytes");
  }
}

}  // namespace

void CheckScan(const CString& ir, const CString& dr, const IniSection& section,
               const std::string& name, Problems& problems) {
  const Fields ir_fields(ir, section.values.at("IR"));
  const Fields dr_fields(dr, section.values.at("DR"));
  icescript::JtagScr scr(nullptr, nullptr);  // reads no file, so it prints nothing
  const std::unique_ptr<icescript::JtagOperatorData> record(scr.ParseJtagOperatorData(ir, dr));
  if (record == nullptr) {
    problems.Error(*section.first, section.first->column, name + " syntax error");
    ExplainRefusal(ir_fields, 0, "IR is LENGTH,BYTE,...", problems);
    ExplainRefusal(dr_fields, 1, "DR is R or W,LENGTH,BYTE,...", problems);
    return;
  }
  CheckFlag(dr_fields, problems);
  if (CheckLength(ir_fields, 0, record->irBitLength, problems)) {
    CheckBytes(ir_fields, 1, record->irBitLength, problems);
  }
  if (CheckLength(dr_fields, 1, record->drBitLength, problems)) {
    CheckBytes(dr_fields, 2, record->drBitLength, problems);
  }
}

}  // namespace icehost
