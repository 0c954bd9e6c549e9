// Writes the events of a run as a page.
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "entry/icescript.h"
#include "host/events/call_fields.h"
#include "host/events/events.h"
#include "host/page/page_writer.h"
#include "host/target/bits.h"

namespace icehost {
namespace {

using Verdict = PageRow::Verdict;

std::string Text(const Field& field) {
  std::string text;
  AppendText(field, text);
  return text;
}

std::string SentByPins(const GpioCall& call, const std::vector<Field>& arguments) {
  const bool start = (call.flags & GPIO_FLAG_START) != 0;
  std::string text;
  if (start || (call.flags & GPIO_FLAG_WRITE_OUT) != 0) text = "OUT " + Text(arguments[0]);
  if (start || (call.flags & GPIO_FLAG_WRITE_OE) != 0) {
    text += (text.empty() ? "OE " : ", OE ") + Text(arguments[1]);
  }
  return text;
}

std::string SentByScan(const Scan& scan) {
  return fmt::format("IR {}: {}, DR {}: {}", scan.ir.bits, ByteText(scan.ir.in), scan.dr.bits,
                     ByteText(scan.dr.in));
}

std::string Sent(const CallEvent& call, const std::vector<Field>& arguments) {
  if (const auto* pins = call.As<GpioCall>()) return SentByPins(*pins, arguments);
  if (const auto* scan = call.As<InsertCall>()) return SentByScan(*scan->scan);
  if (const auto* scan = call.As<ExecuteCall>()) return SentByScan(*scan->scan);
  if (call.As<ResetCall>() != nullptr) return "reset " + Text(arguments[0]);
  return Text(arguments[0]) + " " + Text(arguments[1]);
}

std::string Received(const std::vector<Field>& outputs) {
  std::string text;
  for (const Field& field : outputs) {
    if (!text.empty()) text += ", ";
    if (field.kind == Field::Kind::kPins)
      text += fmt::format("0x{:02x} ", static_cast<unsigned>(field.number));
    if (std::string_view(field.name).substr(0, 5) == "chain") text.append(field.name).append(" ");
    text.append(RegisterOf(field.name)).append(Text(field));
  }
  return text;
}

// Returns whether a mask such as "0xff" selects all bits.
bool CountsAll(const std::string& mask) {
  return mask.find_first_not_of('f', 2) == std::string::npos;
}

std::string Expected(const CallEvent& call) {
  std::string text;
  for (const Comparison& one : call.comparisons) {
    if (!text.empty()) text += ", ";
    text.append(RegisterOf(one.of)).append(one.expected);
    if (!CountsAll(one.mask)) text.append("/").append(one.mask);
  }
  return text;
}

// Returns a hexadecimal mask of the wrong bits for each value that has wrong bits.
std::string Wrong(const CallEvent& call) {
  std::string text;
  for (const Comparison& one : call.comparisons) {
    if (one.wrong_bits.empty()) continue;
    Bits bits(*std::max_element(one.wrong_bits.begin(), one.wrong_bits.end()) + 1);
    for (const std::size_t bit : one.wrong_bits) bits[bit] = true;
    if (!text.empty()) text += ", ";
    text.append(RegisterOf(one.of)).append(BitText(bits));
  }
  return text;
}

Verdict VerdictOf(const CallEvent& call) {
  const bool met = std::all_of(call.comparisons.begin(), call.comparisons.end(),
                               [](const Comparison& one) { return one.fault.empty(); });
  if (!met) return Verdict::kNotMet;
  if (call.result != 0) return Verdict::kFailed;
  return call.comparisons.empty() ? Verdict::kDone : Verdict::kMet;
}

// Returns the name of a GPIO operation with these flags.
std::string PinName(int flags) {
  if ((flags & GPIO_FLAG_START) != 0) return "START";
  if ((flags & GPIO_FLAG_END) != 0) return "END";
  const bool writes = (flags & (GPIO_FLAG_WRITE_OUT | GPIO_FLAG_WRITE_OE)) != 0;
  const bool reads = (flags & GPIO_FLAG_READ_IN) != 0;
  if (writes) return reads ? "write, read" : "write";
  return reads ? "read" : "nothing";
}

std::string NameOfOperation(const CallEvent& call) {
  if (call.source.section != nullptr) return fmt::format("[{}]", *call.source.section);
  const auto* const pins = call.As<GpioCall>();
  return pins != nullptr ? PinName(pins->flags) : FunctionOf(call.call);
}

// Writes a row for each operation, followed by the reasons if the operation failed.
class RunPage : public Output, public EventListener, public StepRecorder {
 public:
  explicit RunPage(std::ostream& stream) : stream_(stream) {}
  void OnRound(long round) override { round_ = fmt::format(", round {}", round); }
  void OnScript(const ScriptBegin& script) override;
  void OnCall(const CallEvent& call) override;
  void OnMessage(const char* text) override;
  void OnNotice(const Notice& notice) override;
  void OnScriptEnd(const ScriptEnd& end) override;
  void Record(const PinStep& step) override { writer_.Record(step); }
  void End(const PageHead& head) override { writer_.Write(stream_, head); }

 private:
  PageRow Row(const CallEvent& call) const;
  void Add(const PageRow& row);
  void TellErrors();

  struct Error {
    std::string text;
    int line;
  };
  std::ostream& stream_;
  PageWriter writer_;
  std::string round_;            // appended to script names in a repeated run
  long operation_ = 0;           // the number of the next operation
  std::optional<PageRow> scan_;  // an inserted scan that has not been executed yet
  std::vector<Error> errors_;    // the errors of the current call
};

void RunPage::OnScript(const ScriptBegin& script) {
  writer_.AddSource(script.name + round_, script.content, script.marks);
  operation_ = 0;
}

// A scan takes three calls: interface query, insert and execute. Only execute gets a row. If the
// script ends before it, OnScriptEnd adds the row of the insert call.
void RunPage::OnCall(const CallEvent& call) {
  if (AsksForInterface(call)) return;
  scan_.reset();
  if (call.As<InsertCall>() != nullptr && call.result == 0) {
    scan_ = Row(call);
  } else {
    Add(Row(call));
  }
}

void RunPage::OnMessage(const char* text) {
  TellErrors();
  writer_.AddMessage(text);
}

// The page counts an entry with a line as a failure of this line.
void RunPage::OnNotice(const Notice& notice) {
  const bool failure = notice.severity == Severity::kError;
  errors_.push_back({PlacedText(notice), failure ? notice.place.line : 0});
}

void RunPage::OnScriptEnd(const ScriptEnd& /*end*/) {
  if (scan_.has_value()) {
    scan_->verdict = Verdict::kFailed;
    Add(*scan_);
    scan_.reset();
  }
  TellErrors();
}

PageRow RunPage::Row(const CallEvent& call) const {
  const CallFields fields = FieldsOf(call.call);
  return {operation_,
          call.source.line,
          call.steps,
          NameOfOperation(call),
          Sent(call, fields.arguments),
          Received(fields.outputs),
          Expected(call),
          Wrong(call),
          VerdictOf(call)};
}

void RunPage::Add(const PageRow& row) {
  writer_.AddRow(row);
  ++operation_;
  TellErrors();
}

void RunPage::TellErrors() {
  for (const Error& error : errors_) writer_.AddError(error.text, error.line);
  errors_.clear();
}

}  // namespace

std::unique_ptr<Output> MakeRunPage(std::ostream& stream) {
  return std::make_unique<RunPage>(stream);
}

}  // namespace icehost
