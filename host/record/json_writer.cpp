#include "host/record/json_writer.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

namespace icehost {
namespace {

using Json = nlohmann::ordered_json;

std::string Text(const Json& json) {
  return json.dump(-1, ' ', true, Json::error_handler_t::replace);
}

void WriteLine(std::ostream& stream, const Json& line) {
  stream << Text(line) << '\n';
}

// The names are ours and the bytes are digits: there is nothing to escape.
void AppendFields(const std::vector<Field>& fields, std::string& line) {
  for (const Field& field : fields) {
    line.append(",\"").append(field.name) += "\":";
    if (field.kind == Field::Kind::kBytes) {
      line.append("\"").append(field.bytes) += '"';
    } else {
      line += fmt::format_int(field.number).c_str();
    }
  }
}

void AppendNumber(const char* key, int number, std::string& line) {
  line.append(key).append(fmt::format_int(number).c_str());
}

void AppendSource(const CallSource& source, std::string& line) {
  if (source.line != 0) AppendNumber(",\"line\":", source.line, line);
  if (source.section == nullptr) return;
  line.append(",\"section\":").append(Text(*source.section));
  AppendNumber(",\"operation\":", source.operation, line);
}

void AppendComparisons(const std::vector<Comparison>& comparisons, std::string& line) {
  const char* before = ",\"expectations\":[";
  for (const Comparison& one : comparisons) {
    line += fmt::format(
        R"({}{{"of":"{}","line":{},"column":{},"expected":"{}","mask":"{}","captured":{},"met":{}}})",
        before, one.of, one.line, one.column, one.expected, one.mask,
        one.captured.empty() ? "null" : '"' + one.captured + '"', one.met);
    before = ",";
  }
  if (!comparisons.empty()) line += ']';
}

}  // namespace

void JsonWriter::OnScript(const std::string& path) {
  WriteLine(stream_, {{"script", path}});
}

// Put together by hand: a long run has millions of them.
void JsonWriter::OnCall(const CallEvent& call) {
  line_.assign("{\"call\":\"").append(call.function) += '"';
  AppendSource(call.source, line_);
  AppendFields(call.arguments, line_);
  line_.append(",\"result\":").append(fmt::format_int(call.result).c_str());
  AppendFields(call.outputs, line_);
  AppendComparisons(call.comparisons, line_);
  stream_ << (line_ += "}\n");
}

void JsonWriter::OnMessage(const char* text) {
  WriteLine(stream_, {{"message", text}});
}

void JsonWriter::OnError(const std::string& text, int line) {
  Json error = {{"error", text}};
  if (line != 0) error["line"] = line;
  WriteLine(stream_, error);
}

void JsonWriter::OnScriptEnd(bool ran) {
  WriteLine(stream_, {{"end", ran}});
}

}  // namespace icehost
