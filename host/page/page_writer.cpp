#include "host/page/page_writer.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/system/text.h"
#include "host/target/wires.h"

namespace icehost {
namespace {

// With these limits, a browser needs about a second and a few hundred megabytes for the page.
constexpr std::size_t kMostSteps = 100000;
constexpr long kMostRows = 100000;
constexpr std::size_t kMostLogBytes = 64U << 20U;
constexpr long kMostMessageLines = 400000;
constexpr long kMostLines = 100000;
constexpr std::size_t kMostSourceBytes = 32U << 20U;
constexpr long kMostMarks = 10000;
// After a limit above is reached, up to this many failed rows and errors are still added.
constexpr int kMostLateFaults = 1000;

constexpr int kUnknownTap = kTapStates;

// Returns JSON in which no "<" can end the script element of the page.
std::string PageText(std::string_view text) {
  std::string json = JsonText(text);
  for (std::size_t at = 0; (at = json.find('<', at)) != std::string::npos;) {
    json.replace(at, 1, "\\u003c");
  }
  return json;
}

// Encodes each number as two bytes, low byte first, in Base64 (RFC 4648).
std::string Base64(const std::vector<std::uint16_t>& numbers) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  unsigned bits = 0;
  int count = 0;
  for (const unsigned number : numbers) {
    for (const unsigned byte : {number & 0xFFU, number >> 8U}) {
      bits = (bits << 8U | byte) & 0xFFFFU;
      for (count += 8; count >= 6; count -= 6) text += kDigits[bits >> (count - 6) & 0x3FU];
    }
  }
  if (count > 0) text += kDigits[bits << (6 - count) & 0x3FU];
  text.append((4 - text.size() % 4) % 4, '=');
  return text;
}

std::string Names(const char* const* begin, int count) {
  return fmt::format("[\"{}\"]", fmt::join(begin, begin + count, "\",\""));
}

std::string TapNames() {
  const char* names[kTapStates];
  for (int i = 0; i < kTapStates; ++i) names[i] = TapStateName(static_cast<TapState>(i));
  return Names(names, kTapStates);
}

std::string HeadText(const PageHead& head) {
  std::string text =
      fmt::format(R"({{"title":{},"result":{},"good":{},"planned":{},"entries":[)",
                  PageText(head.title), PageText(head.result), head.good, head.planned);
  const char* before = "";
  for (const auto& [name, value] : head.entries) {
    text += fmt::format("{}[{},{}]", before, PageText(name), PageText(value));
    before = ",";
  }
  return text + "]}";
}

}  // namespace

void PageWriter::AddSource(std::string_view name, std::string_view content,
                           const std::vector<SourceMark>& marks) {
  if (!sources_.empty()) sources_ += ",\n";
  sources_ += fmt::format(R"({{"name":{},"lines":[)", PageText(name));
  const char* before = "";
  long total = 0;
  while (!content.empty()) {
    const std::string_view line = content.substr(0, content.find('\n'));
    content.remove_prefix(std::min(line.size() + 1, content.size()));
    ++total;
    if (lines_ >= kMostLines || sources_.size() >= kMostSourceBytes) continue;
    ++lines_;
    sources_.append(before).append(PageText(line));
    before = ",";
  }
  sources_ += fmt::format(R"(],"total_lines":{},"total_marks":{},"marks":[)", total, marks.size());
  before = "";
  for (const SourceMark& mark : marks) {
    if (marks_++ >= kMostMarks) break;
    sources_ += fmt::format("{}[{},{},{},{}]", before, mark.line, mark.column,
                            mark.severity == Severity::kError, PageText(mark.text));
    before = ",";
  }
  sources_ += "]}";
  Append("0");
}

void PageWriter::AddRow(const PageRow& row) {
  ++total_rows_;
  const bool fault = row.verdict >= PageRow::Verdict::kNotMet;
  if (HasRoom()) {
    ++first_rows_;
  } else if (!fault || !HasRoomForFault()) {
    return;
  }
  Append(fmt::format("[{},{},{},{},{},{},{},{},{},{}]", row.number, row.line, row.steps.begin,
                     row.steps.end, PageText(row.name), PageText(row.sent), PageText(row.received),
                     PageText(row.expected), PageText(row.wrong), static_cast<int>(row.verdict)));
}

void PageWriter::AddMessage(std::string_view text) {
  if (!HasRoom()) {
    cut_messages_ = true;
    return;
  }
  message_lines_ += std::count(text.begin(), text.end(), '\n');
  Append(PageText(text));
}

void PageWriter::AddError(std::string_view text, int line) {
  if (!HasRoom() && !HasRoomForFault()) return;
  Append(fmt::format(R"({{"line":{},"text":{}}})", line, PageText(text)));
}

void PageWriter::Record(const PinStep& step) {
  ++total_steps_;
  if (steps_.size() >= kMostSteps) return;
  const int tap = step.tap.has_value() ? static_cast<int>(*step.tap) : kUnknownTap;
  steps_.push_back(static_cast<std::uint16_t>(tap << kPinCount | step.wires));
}

void PageWriter::Write(std::ostream& stream, const PageHead& head) const {
  constexpr std::string_view kMark = "@data@";
  const std::string_view page = PageTemplate();
  const std::size_t at = page.find(kMark);
  stream << page.substr(0, at) << "{\"head\":" << HeadText(head) << ",\n\"sources\":[" << sources_
         << "],\n\"log\":[" << log_ << "],\n"
         << Totals() << ",\n\"pins\":" << Names(kPinNames, kPinCount) << ",\"taps\":" << TapNames()
         << ",\n\"steps\":\"" << Base64(steps_) << "\"}" << page.substr(at + kMark.size());
}

bool PageWriter::HasRoom() const {
  return first_rows_ < kMostRows && log_.size() < kMostLogBytes &&
         message_lines_ < kMostMessageLines;
}

bool PageWriter::HasRoomForFault() {
  if (late_faults_ < kMostLateFaults) {
    ++late_faults_;
    return true;
  }
  cut_faults_ = true;
  return false;
}

void PageWriter::Append(std::string_view entry) {
  if (!log_.empty()) log_ += ",\n";
  log_ += entry;
}

std::string PageWriter::Totals() const {
  return fmt::format(
      R"("total_rows":{},"first_rows":{},"total_steps":{},"late_faults":{},"cut_messages":{},"cut_faults":{})",
      total_rows_, first_rows_, total_steps_, late_faults_, cut_messages_, cut_faults_);
}

}  // namespace icehost
