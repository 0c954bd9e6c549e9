#include "host/page/run_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "host/events/field_text.h"

namespace icehost {
namespace {

using Verdict = PageRow::Verdict;

bool Is(const CallEvent& call, const char* function) {
  return std::string_view(call.function) == function;
}

bool AsksForInterface(const CallEvent& call) {
  return Is(call, "link_config") && call.arguments[0].number == LINK_CONFIG_GET_CDI;
}

std::string Text(const Field& field) {
  std::string text;
  AppendText(field, text);
  return text;
}

std::string SentByPins(const CallEvent& call) {
  const int flags = call.arguments[2].number;
  const bool start = (flags & GPIO_FLAG_START) != 0;
  std::string text;
  if (start || (flags & GPIO_FLAG_WRITE_OUT) != 0) text = "OUT " + Text(call.arguments[0]);
  if (start || (flags & GPIO_FLAG_WRITE_OE) != 0) {
    text += (text.empty() ? "OE " : ", OE ") + Text(call.arguments[1]);
  }
  return text;
}

std::string Sent(const CallEvent& call) {
  if (Is(call, "link_gpio_operator")) return SentByPins(call);
  if (Is(call, "link_reset")) return "reset " + Text(call.arguments[0]);
  if (Is(call, "link_config")) return Text(call.arguments[0]) + " " + Text(call.arguments[1]);
  if (!Is(call, "link_jtag_insert")) return "";
  return fmt::format("IR {}: {}, DR {}: {}", call.arguments[0].number, call.arguments[1].bytes,
                     call.arguments[2].number, call.arguments[3].bytes);
}

std::string Received(const CallEvent& call) {
  std::string text;
  for (const Field& field : call.outputs) {
    if (!text.empty()) text += ", ";
    if (field.kind == Field::Kind::kPins)
      text += fmt::format("0x{:02x} ", static_cast<unsigned>(field.number));
    text.append(RegisterOf(field.name)).append(Text(field));
  }
  return text;
}

// Of a mask as "0x" and its digits.
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

Verdict VerdictOf(const CallEvent& call) {
  const bool met = std::all_of(call.comparisons.begin(), call.comparisons.end(),
                               [](const Comparison& one) { return one.met; });
  if (!met) return Verdict::kNotMet;
  if (call.result != 0) return Verdict::kFailed;
  return call.comparisons.empty() ? Verdict::kDone : Verdict::kMet;
}

// What a line of a GPIO script does.
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
  return Is(call, "link_gpio_operator") ? PinName(call.arguments[2].number) : call.function;
}

}  // namespace

void RunPage::OnScript(const std::string& /*path*/) {
  operation_ = 0;
}

// A scan is asked for, inserted and executed.
void RunPage::OnCall(const CallEvent& call) {
  if (AsksForInterface(call)) return;
  if (Is(call, "link_jtag_insert") && call.result == 0) {
    scan_ = Row(call);
    return;
  }
  PageRow row = Row(call);
  if (Is(call, "link_jtag_execute") && scan_.has_value()) row.sent = std::move(scan_->sent);
  scan_.reset();
  Add(row);
}

void RunPage::OnMessage(const char* text) {
  TellErrors();
  writer_.AddMessage(text);
}

void RunPage::OnError(const std::string& text, int line) {
  errors_.push_back({text, line});
}

void RunPage::OnScriptEnd(bool /*ran*/) {
  if (scan_.has_value()) {
    scan_->verdict = Verdict::kFailed;
    Add(*scan_);
    scan_.reset();
  }
  TellErrors();
}

PageRow RunPage::Row(const CallEvent& call) const {
  return {operation_, call.source.line, call.steps,     NameOfOperation(call),
          Sent(call), Received(call),   Expected(call), VerdictOf(call)};
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

}  // namespace icehost
