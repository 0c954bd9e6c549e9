#include "host/svf/script_writer.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/system/text.h"

namespace icehost {
namespace {

constexpr std::size_t kLongestName = 200;

// "0x01,0x02": the bits that are shifted first in the first byte.
std::string Bytes(const Bits& bits) {
  std::string bytes((bits.size() + 7) / 8, '\0');
  StoreBits(bits, static_cast<int>(bits.size()), reinterpret_cast<std::uint8_t*>(bytes.data()));
  std::string text;
  for (const char byte : bytes) {
    text += fmt::format("{}0x{:02x}", text.empty() ? "" : ",", static_cast<unsigned char>(byte));
  }
  return text;
}

// A file's name for a comment, in which "expect" would be taken for an expectation.
std::string NameInComment(std::string name) {
  if (name.size() > kLongestName) name = "..." + name.substr(name.size() - kLongestName);
  name = Printable(name);
  std::string lower = name;
  for (char& ch : lower) ch = ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch - 'A' + 'a') : ch;
  for (std::size_t at = lower.find("expect"); at != std::string::npos;
       at = lower.find("expect", at + 1)) {
    name[at] = '?';
  }
  return name;
}

}  // namespace

void ScriptWriter::Comment(const std::string& text) {
  text_ += fmt::format("# {}\n", text);
}

void ScriptWriter::Section(int line, const std::optional<SvfShift>& ir,
                           const std::optional<SvfShift>& dr) {
  on_line_ = line == last_line_ ? on_line_ + 1 : 1;
  last_line_ = line;
  text_ += fmt::format("[LINE_{}{}]\n", line, on_line_ > 1 ? fmt::format("_{}", on_line_) : "");
  if (ir.has_value()) {
    Value("IR=", ir->tdi);
  } else {
    text_ += "IR=0,0x00\n";
  }
  if (dr.has_value()) {
    Value(dr->Compares() ? "DR=R," : "DR=W,", dr->tdi);
  } else {
    text_ += "DR=W,0,0x00\n";
  }
  if (ir.has_value()) Expected("IR_TDO", "IR_MASK", *ir);
  if (dr.has_value()) Expected("TDO", "MASK", *dr);
  text_ += '\n';
}

void ScriptWriter::Value(const char* key, const Bits& bits) {
  text_ += fmt::format("{}{},{}\n", key, bits.size(), Bytes(bits));
}

void ScriptWriter::Expected(const char* value_key, const char* mask_key, const SvfShift& shift) {
  if (!shift.Compares()) return;
  text_ += fmt::format("{}={}\n", value_key, Bytes(shift.tdo));
  if (std::find(shift.mask.begin(), shift.mask.end(), false) == shift.mask.end()) return;
  text_ += fmt::format("{}={}\n", mask_key, Bytes(shift.mask));
}

std::string ScriptHead(const std::string& name, bool loads_again) {
  std::string head = fmt::format(
      "# Imported by icehost from {}. A section is named after the line of its\n"
      "# scan there.\n",
      NameInComment(name));
  if (loads_again) {
    head +=
        "# A section is an IR scan and then a DR scan: where a DR is scanned again, the section "
        "loads\n"
        "# the same instruction again.\n";
  }
  return head + '\n';
}

}  // namespace icehost
