#include "host/svf/svf_writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "host/system/text.h"

namespace icehost {
namespace {

constexpr std::size_t kDigitsOnLine = 64;
constexpr std::size_t kLongestComment = 200;
constexpr std::size_t kLongestPath = 100;

// Returns the bits as hexadecimal digits. The bit that is shifted first is at the right end.
std::string Hex(const Bits& bits) {
  std::string text = BitText(bits);
  text.erase(0, text.size() - (bits.size() + 3) / 4);
  for (char& ch : text) ch = icescript::UpperCase(ch);
  return text;
}

// Writes a value such as "TDI (0123)", on several lines if it is long.
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

void SvfWriter::Begin() {
  Comment("Recorded by icehost during a run. TDO is the value that was read.");
  Statement("ENDIR IDLE");
  Statement("ENDDR IDLE");
}

void SvfWriter::OnRound(long round) {
  Comment("Round " + std::to_string(round) +
          (round == 1 ? ". Later rounds are shown only if they fail." : "."));
}

Bits SvfWriter::MaskOf(const CallSource& source, bool ir, std::size_t bits) {
  const std::string* const own = ir ? source.ir_mask : source.dr_mask;
  if (own != nullptr) return BitsOfBytes(*own, bits);
  if (!ir) return source.reads ? Bits(bits, true) : Bits();
  Bits mask(bits);
  std::fill_n(mask.begin(), std::min<std::size_t>(bits, 2), true);
  return mask;
}

void SvfWriter::Comment(const std::string& text) {
  std::string plain = Printable(text);
  if (plain.size() > kLongestComment) plain.replace(kLongestComment, std::string::npos, "...");
  std::replace_if(
      plain.begin(), plain.end(), [](char ch) { return ch < ' ' || ch > '~'; }, '?');
  stream_ << "! " << plain << '\n';
}

void SvfWriter::CommentOnPlace(const std::string& path, const CallSource& source, int last_line) {
  std::string text =
      path.size() <= kLongestPath ? path : "..." + path.substr(path.size() - kLongestPath);
  if (source.line != 0) text += fmt::format(":{}", source.line);
  if (last_line != 0 && last_line != source.line) text += fmt::format(" to :{}", last_line);
  if (source.section != nullptr) text += fmt::format(" [{}]", *source.section);
  Comment(text);
}

void SvfWriter::CommentOnUnmet(const CallEvent& call) {
  for (const Comparison& one : call.comparisons) {
    if (one.fault.empty()) continue;
    Comment(fmt::format("line {0} expects {2} {1}, mask {3}", one.line, one.expected, one.of,
                        one.mask));
  }
}

// Writes the bits for the other TAPs, which a player shifts before and after the bits of a scan.
void SvfWriter::FrameStatements(bool framed) {
  const auto write = [&](const char* name, std::size_t bits, bool fill) {
    if (!framed) bits = 0;
    stream_ << name << ' ' << bits;
    if (bits > 0) WriteValue("TDI", Bits(bits, fill), stream_);
    stream_ << ";\n";
  };
  write("HIR", place_.Before(TapColumn::kIr), true);
  write("TIR", place_.After(TapColumn::kIr), true);
  write("HDR", place_.Before(TapColumn::kDr), false);
  write("TDR", place_.After(TapColumn::kDr), false);
}

void SvfWriter::ScanStatement(const SvfScan& scan) {
  if (std::exchange(framed_, scan.own) != scan.own) FrameStatements(scan.own);
  stream_ << (scan.ir ? "SIR " : "SDR ") << scan.tdi.size();
  WriteValue("TDI", scan.tdi, stream_);
  if (!scan.mask.empty()) {
    WriteValue("TDO", scan.tdo, stream_);
    WriteValue("MASK", scan.mask, stream_);
  }
  stream_ << ";\n";
}

void SvfWriter::Lose(const char* warning, const std::string& comment) {
  Comment(comment);
  if (lost_.insert(warning).second) losses_.push_back(fmt::format("warning: --svf: {}", warning));
}

std::vector<std::string> SvfWriter::TakeLosses() {
  return std::exchange(losses_, {});
}

}  // namespace icehost
