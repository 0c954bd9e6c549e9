#include "host/check/scan_expectation.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>

#include "base/field_cursor.h"
#include "host/check/scan_fields.h"

namespace icehost {
namespace {

// How many bits of a captured IR a probe hands out.
constexpr int kMostIrBits = 16;

// The bytes behind the "=", as many as hold `bits` bits; none where they are something else, which
// is reported.
std::optional<std::string> ReadBytes(const ScriptLine& line, int bits, Problems& problems) {
  const auto held = static_cast<std::size_t>((bits + 7) / 8);
  std::string bytes;
  for (icescript::FieldCursor fields(ValueOf(line), ','); fields.HasNext();) {
    const std::string_view field = Trimmed(fields.Next());
    if (!IsHexByte(field)) {
      problems.Error(line.Of(field), fmt::format("\"{}\" is no hexadecimal byte", field));
      return std::nullopt;
    }
    if (bytes.size() == held) {
      problems.Error(line.Of(field), fmt::format("more bytes than the {} bits hold", bits));
      return std::nullopt;
    }
    bytes += static_cast<char>(ByteOf(field));
  }
  if (bytes.size() == held) return bytes;
  problems.Error(line.Of(ValueOf(line)),
                 fmt::format("{} bits need {} bytes, not {}", bits, held, bytes.size()));
  return std::nullopt;
}

// All bits of a register.
std::string WholeMask(int bits) {
  std::string mask(static_cast<std::size_t>((bits + 7) / 8), '\xFF');
  if (bits % 8 != 0) mask.back() = static_cast<char>((1 << bits % 8) - 1);
  return mask;
}

// Cuts the mask to the register; false where nothing is left, which is reported.
bool CutMask(const ScriptLine& line, int bits, std::string& mask, Problems& problems) {
  mask.back() = static_cast<char>(mask.back() & WholeMask(bits).back());
  if (std::any_of(mask.begin(), mask.end(), [](char byte) { return byte != 0; })) return true;
  problems.Error(line.Of(ValueOf(line)), "a mask of 0 compares nothing");
  return false;
}

}  // namespace

std::optional<Expectation> ScanExpectation(const ScriptText& script, const IniSection& section,
                                           ScanKey value_key, int bits, Problems& problems) {
  const int value_at = section.lines[value_key];
  const int mask_at = section.lines[value_key + 1];
  const IniKeys& keys = KeysOf(section.name);
  if (value_at == 0) {
    if (mask_at == 0) return std::nullopt;
    problems.Error(script.Line(mask_at).Start(), fmt::format("{} without {}: nothing is compared",
                                                             keys[value_key + 1], keys[value_key]));
    return std::nullopt;
  }
  const ScriptLine line = script.Line(value_at);
  if (bits <= 0 || (value_key == kIrTdo && bits > kMostIrBits)) {
    problems.Error(line.Start(), bits <= 0 ? "nothing is shifted: there is nothing to expect"
                                           : "of a captured IR no more than 16 bits can be told");
    return std::nullopt;
  }
  std::optional<std::string> value = ReadBytes(line, bits, problems);
  std::string mask = WholeMask(bits);
  if (value.has_value() && (value->back() & ~mask.back()) != 0) {
    problems.Error(line.Of(ValueOf(line)),
                   fmt::format("bits are set beyond the {} of the length", bits));
    value.reset();
  }
  if (mask_at != 0) {
    const ScriptLine mask_line = script.Line(mask_at);
    const std::optional<std::string> read = ReadBytes(mask_line, bits, problems);
    mask = read.value_or("");
    if (!read.has_value() || !CutMask(mask_line, bits, mask, problems)) return std::nullopt;
  }
  if (!value.has_value()) return std::nullopt;
  const auto of = value_key == kTdo ? Expectation::Of::kDr : Expectation::Of::kIr;
  return Expectation{0,           of, line.Of(ValueOf(line)), std::move(*value), std::move(mask),
                     mask_at != 0};
}

}  // namespace icehost
