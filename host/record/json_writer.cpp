#include "host/record/json_writer.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

namespace icehost {
namespace {

using Json = nlohmann::ordered_json;

void WriteLine(std::ostream& stream, const Json& line) {
  stream << line.dump(-1, ' ', true, Json::error_handler_t::replace) << '\n';
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

}  // namespace

void JsonWriter::OnScript(const std::string& path) {
  WriteLine(stream_, {{"script", path}});
}

// Put together by hand: a long run has millions of them.
void JsonWriter::OnCall(const CallEvent& call) {
  line_.assign("{\"call\":\"").append(call.function) += '"';
  AppendFields(call.arguments, line_);
  line_.append(",\"result\":").append(fmt::format_int(call.result).c_str());
  AppendFields(call.outputs, line_);
  stream_ << (line_ += "}\n");
}

void JsonWriter::OnMessage(const char* text) {
  WriteLine(stream_, {{"message", text}});
}

void JsonWriter::OnError(const std::string& text) {
  WriteLine(stream_, {{"error", text}});
}

void JsonWriter::OnScriptEnd(bool ran) {
  WriteLine(stream_, {{"end", ran}});
}

}  // namespace icehost
