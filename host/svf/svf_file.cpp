#include "host/svf/svf_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "host/system/text.h"

namespace icehost {
namespace {

constexpr std::size_t kDigitsOnLine = 64;
constexpr std::size_t kLongestComment = 200;
constexpr std::size_t kLongestPath = 100;

// By SvfLoss.
constexpr const char* kLossTexts[kSvfLosses] = {
    "SVF has no word for NRST: a player does not reset the target",
    "SVF knows no 2-wire interface: a player scans over 5 wires",
    "SVF cannot release pins: a player drives them",
    "SVF has no scan of 0 bits: a player neither captures nor updates there",
    "a scan was cut short: it is not in the file",
    "a scan has more than 1048576 bits: it is not in the file",
    "a scan went through a Pause state: a player does not",
    "scans followed each other without Run-Test/Idle: a player goes through it",
};

// Hexadecimal, the bit that is shifted first at the right end.
std::string Hex(const Bits& bits) {
  const std::size_t digits = (bits.size() + 3) / 4;
  std::string text(digits, '0');
  for (std::size_t digit = 0; digit < digits; ++digit) {
    unsigned value = 0;
    for (std::size_t i = 4 * digit; i < std::min(4 * digit + 4, bits.size()); ++i) {
      value |= unsigned{bits[i]} << i % 4;
    }
    text[digits - 1 - digit] = "0123456789ABCDEF"[value];
  }
  return text;
}

// "TDI (0123)", over several lines where it is long.
void WriteValue(const char* name, const Bits& bits, std::ostream& stream) {
  const std::string digits = Hex(bits);
  const bool is_long = digits.size() > kDigitsOnLine;
  stream << (is_long ? "\n  " : " ") << name << " (";
  for (std::size_t at = 0; at < digits.size(); at += kDigitsOnLine) {
    stream << (at > 0 ? "\n    " : "") << std::string_view(digits).substr(at, kDigitsOnLine);
  }
  stream << ')';
}

}  // namespace

void SvfFile::Begin() {
  Comment("Played by icehost, which wrote this while it ran. TDO is what came back.");
  Statement("ENDIR IDLE");
  Statement("ENDDR IDLE");
}

void SvfFile::Place(const std::string& path, const CallSource& source, int last_line) {
  std::string text =
      path.size() <= kLongestPath ? path : "..." + path.substr(path.size() - kLongestPath);
  if (source.line != 0) text += fmt::format(":{}", source.line);
  if (last_line != 0 && last_line != source.line) text += fmt::format(" to :{}", last_line);
  if (source.section != nullptr) text += fmt::format(" [{}]", *source.section);
  Comment(text);
}

void SvfFile::Comment(const std::string& text) {
  std::string plain = Printable(text);
  if (plain.size() > kLongestComment) plain.replace(kLongestComment, std::string::npos, "...");
  std::replace_if(
      plain.begin(), plain.end(), [](char ch) { return ch < ' ' || ch > '~'; }, '?');
  stream_ << "! " << plain << '\n';
}

void SvfFile::Scan(const SvfScan& scan) {
  stream_ << (scan.ir ? "SIR " : "SDR ") << scan.tdi.size();
  WriteValue("TDI", scan.tdi, stream_);
  if (!scan.mask.empty()) {
    WriteValue("TDO", scan.tdo, stream_);
    WriteValue("MASK", scan.mask, stream_);
  }
  stream_ << ";\n";
}

void SvfFile::Lose(SvfLoss what, const std::string& comment) {
  Comment(comment);
  const auto kind = static_cast<std::size_t>(what);
  if (!std::exchange(lost_[kind], true))
    losses_.push_back(fmt::format("warning: --svf: {}", kLossTexts[kind]));
}

std::vector<std::string> SvfFile::TakeLosses() {
  return std::exchange(losses_, {});
}

void CommentOnUnmet(const CallEvent& call, SvfFile& file) {
  for (const Comparison& one : call.comparisons) {
    if (one.met) continue;
    file.Comment(
        fmt::format("line {} expects {} of {}, mask {}", one.line, one.expected, one.of, one.mask));
  }
}

}  // namespace icehost
