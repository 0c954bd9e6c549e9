#include "host/record/trace_writer.h"

#include "host/system/printable.h"

namespace icehost {
namespace {

void WriteFields(std::ostream& stream, const std::vector<Field>& fields, const char* separator) {
  const char* before = "";
  for (const Field& field : fields) {
    stream << before << field.name << '=' << field.text;
    before = separator;
  }
}

}  // namespace

void TraceWriter::OnScript(const std::string& path) {
  stream_ << "# " << Printable(path) << '\n';
}

void TraceWriter::OnCall(const CallEvent& call) {
  stream_ << call.function << '(';
  WriteFields(stream_, call.arguments, ", ");
  stream_ << ") = " << call.result << (call.outputs.empty() ? "" : "  ");
  WriteFields(stream_, call.outputs, " ");
  stream_ << '\n';
}

void TraceWriter::OnMessage(const char* /*text*/) {}

// On standard error it stands already.
void TraceWriter::OnError(const std::string& /*text*/) {}

void TraceWriter::OnScriptEnd(bool ran) {
  stream_ << (ran ? "# ran\n" : "# failed\n");
}

}  // namespace icehost
