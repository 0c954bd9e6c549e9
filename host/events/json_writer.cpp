// The events of a run as JSON lines for programs.
#include <fmt/format.h>

#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "host/events/call_fields.h"
#include "host/events/events.h"
#include "host/events/run_writers.h"
#include "host/system/text.h"
#include "host/target/wires.h"

namespace icehost {
namespace {

void AppendNumber(int number, std::string& line) {
  const fmt::format_int digits(number);
  line.append(digits.data(), digits.size());
}

void AppendFlagNames(int flags, std::string& line) {
  line += ",\"flag_names\":[";
  const char* before = "\"";
  for (int bit = 0; bit < kFlags; ++bit) {
    if ((flags >> bit & 1) == 0) continue;
    line.append(before).append(kFlagNames[bit]) += '"';
    before = ",\"";
  }
  line += ']';
}

// The name under the key of the field, the number beside it.
void AppendNamed(const Field& field, std::string& line) {
  const char* const name = NameOf(field);
  if (name != nullptr) {
    line.append("\"").append(name) += '"';
  } else {
    line += "null";
  }
  line.append(",\"").append(field.name) += "_number\":";
  AppendNumber(field.number, line);
}

// The names are ours and the bytes are digits: there is nothing to escape.
void AppendFields(const std::vector<Field>& fields, std::string& line) {
  for (const Field& field : fields) {
    line.append(",\"").append(field.name) += "\":";
    switch (field.kind) {
      case Field::Kind::kBytes:
        line.append("\"").append(field.bytes) += '"';
        break;
      case Field::Kind::kCode:
      case Field::Kind::kMode:
      case Field::Kind::kReset:
        AppendNamed(field, line);
        break;
      case Field::Kind::kFlags:
        AppendNumber(field.number, line);
        AppendFlagNames(field.number, line);
        break;
      case Field::Kind::kNumber:
      case Field::Kind::kPins:
        AppendNumber(field.number, line);
        break;
    }
  }
}

void AppendSource(const CallSource& source, std::string& line) {
  if (source.line != 0) {
    line += ",\"line\":";
    AppendNumber(source.line, line);
  }
  if (source.section == nullptr) return;
  line.append(",\"section\":").append(JsonText(*source.section)).append(",\"operation\":");
  AppendNumber(source.operation, line);
}

void AppendComparisons(const std::vector<Comparison>& comparisons, std::string& line) {
  const char* before = ",\"expectations\":[";
  for (const Comparison& one : comparisons) {
    const bool met = one.fault.empty();
    line += fmt::format(
        R"({}{{"of":"{}","line":{},"column":{},"expected":"{}","mask":"{}","captured":{},"met":{})",
        before, one.of, one.line, one.column, one.expected, one.mask,
        one.captured.empty() ? "null" : '"' + one.captured + '"', met);
    if (!met) line += fmt::format(R"(,"wrong_bits":[{}])", fmt::join(one.wrong_bits, ","));
    line += '}';
    before = ",";
  }
  if (!comparisons.empty()) line += ']';
}

// Writes one object a line. Its first key names its kind: "schema", "round", "script", "request",
// "call", "message", "error" or "end"; docs/json.md describes them. ASCII only.
class JsonWriter : public Output, public EventListener {
 public:
  // `stream` must outlive the writer.
  explicit JsonWriter(std::ostream& stream) : stream_(stream) {}
  // The line that says what follows.
  void Begin() override;
  void OnRound(long round) override { stream_ << fmt::format("{{\"round\":{}}}\n", round); }
  void OnScript(const std::string& path) override;
  void OnPlace(const ChainPlace& place) override;
  void OnResetRequest() override { stream_ << "{\"request\":\"reset TAP\"}\n"; }
  void OnCall(const CallEvent& call) override;
  void OnMessage(const char* text) override;
  void OnError(const std::string& text, int line) override;
  void OnScriptEnd(bool ran) override;

 private:
  void WriteText(const char* key, std::string_view text);

  std::ostream& stream_;
  std::string line_;  // kept for its room
};

void JsonWriter::Begin() {
  stream_ << "{\"schema\":\"icehost-run\",\"version\":1}\n";
}

void JsonWriter::OnScript(const std::string& path) {
  WriteText("script", path);
}

void JsonWriter::OnPlace(const ChainPlace& place) {
  stream_ << fmt::format("{{\"chain\":[{}],\"tap\":{}}}\n", fmt::join(place.ir_lengths, ","),
                         place.tap + 1);
}

// Put together by hand: a long run has millions of them.
void JsonWriter::OnCall(const CallEvent& call) {
  const CallFields fields = FieldsOf(call.call);
  line_.assign("{\"call\":\"").append(FunctionOf(call.call)) += '"';
  AppendSource(call.source, line_);
  AppendFields(fields.arguments, line_);
  line_ += ",\"result\":";
  AppendNumber(call.result, line_);
  if (AsksForInterface(call) && call.result >= 0 && call.result < kInterfaces) {
    line_.append(",\"interface\":\"").append(kInterfaceNames[call.result]) += '"';
  }
  AppendFields(fields.outputs, line_);
  AppendComparisons(call.comparisons, line_);
  stream_ << (line_ += "}\n");
}

void JsonWriter::OnMessage(const char* text) {
  WriteText("message", text);
}

void JsonWriter::OnError(const std::string& text, int line) {
  line_.assign("{\"error\":").append(JsonText(text));
  if (line != 0) {
    line_ += ",\"line\":";
    AppendNumber(line, line_);
  }
  stream_ << (line_ += "}\n");
}

void JsonWriter::OnScriptEnd(bool ran) {
  stream_ << (ran ? "{\"end\":true}\n" : "{\"end\":false}\n");
}

void JsonWriter::WriteText(const char* key, std::string_view text) {
  line_.assign("{\"").append(key).append("\":").append(JsonText(text)) += "}\n";
  stream_ << line_;
}

}  // namespace

std::unique_ptr<Output> MakeJson(std::ostream& stream) {
  return std::make_unique<JsonWriter>(stream);
}

}  // namespace icehost
