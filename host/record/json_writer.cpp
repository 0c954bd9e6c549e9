#include "host/record/json_writer.h"

#include <nlohmann/json.hpp>

namespace icehost {
namespace {

using Json = nlohmann::ordered_json;

void WriteLine(std::ostream& stream, const Json& line) {
  stream << line.dump(-1, ' ', true, Json::error_handler_t::replace) << '\n';
}

void AddFields(Json& line, const std::vector<Field>& fields) {
  for (const Field& field : fields) {
    line[field.name] = field.number.has_value() ? Json(*field.number) : Json(field.text);
  }
}

}  // namespace

void JsonWriter::OnScript(const std::string& path) {
  WriteLine(stream_, {{"script", path}});
}

void JsonWriter::OnCall(const CallEvent& call) {
  Json line = {{"call", call.function}};
  AddFields(line, call.arguments);
  line["result"] = call.result;
  AddFields(line, call.outputs);
  WriteLine(stream_, line);
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
