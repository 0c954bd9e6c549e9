#include "host/events/trace_writer.h"

#include <fmt/format.h>

#include "host/events/field_text.h"
#include "host/system/text.h"

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

void Append(const Comparison& comparison, std::string& line) {
  line += fmt::format("  {} expected={} mask={}: {}", comparison.of, comparison.expected,
                      comparison.mask, comparison.met ? "met" : "NOT MET");
}

}  // namespace

void TraceWriter::OnScript(const std::string& path) {
  path_ = Printable(path);
  stream_ << "# " << path_ << '\n';
}

void TraceWriter::OnCall(const CallEvent& call) {
  line_.assign(path_);
  if (call.source.line != 0) line_.append(":").append(fmt::format_int(call.source.line).c_str());
  if (call.source.section != nullptr)
    line_ += fmt::format(" [{}]", Printable(*call.source.section));
  line_.append(" ").append(call.function) += '(';
  AppendFields(call.arguments, ", ", line_);
  line_.append(") = ").append(fmt::format_int(call.result).c_str());
  if (!call.outputs.empty()) line_ += "  ";
  AppendFields(call.outputs, " ", line_);
  for (const Comparison& comparison : call.comparisons) Append(comparison, line_);
  stream_ << (line_ += '\n');
}

void TraceWriter::OnScriptEnd(bool ran) {
  stream_ << (ran ? "# ran\n" : "# failed\n");
}

}  // namespace icehost
