#include "host/record/trace_writer.h"

#include <fmt/format.h>

#include "host/record/field_text.h"
#include "host/system/printable.h"

namespace icehost {
namespace {

void AppendFields(const std::vector<Field>& fields, const char* separator, std::string& line) {
  const char* before = "";
  for (const Field& field : fields) {
    line.append(before).append(field.name) += '=';
    AppendText(field, line);
    before = separator;
  }
}

}  // namespace

void TraceWriter::OnScript(const std::string& path) {
  stream_ << "# " << Printable(path) << '\n';
}

void TraceWriter::OnCall(const CallEvent& call) {
  line_.assign(call.function) += '(';
  AppendFields(call.arguments, ", ", line_);
  line_.append(") = ").append(fmt::format_int(call.result).c_str());
  if (!call.outputs.empty()) line_ += "  ";
  AppendFields(call.outputs, " ", line_);
  stream_ << (line_ += '\n');
}

void TraceWriter::OnMessage(const char* /*text*/) {}

// On standard error it stands already.
void TraceWriter::OnError(const std::string& /*text*/) {}

void TraceWriter::OnScriptEnd(bool ran) {
  stream_ << (ran ? "# ran\n" : "# failed\n");
}

}  // namespace icehost
