// Writes the events of a run as readable lines.
#include <fmt/format.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "host/events/call_fields.h"
#include "host/events/events.h"
#include "host/events/run_writers.h"
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
                      comparison.mask, comparison.fault.empty() ? "met" : "NOT MET");
}

// Writes lines such as "id.ini:11 [READ_ID] link_reset(kind=TARGET) = 0", but no messages.
class TraceWriter : public Output, public EventListener {
 public:
  // `stream` must outlive the writer.
  explicit TraceWriter(std::ostream& stream) : stream_(stream) {}
  void OnRound(long round) override;
  void OnScript(const ScriptBegin& script) override;
  void OnPlace(const ChainPlace& place) override;
  void OnResetRequest() override { stream_ << "# reset TAP\n"; }
  void OnCall(const CallEvent& call) override;
  void OnScriptEnd(const ScriptEnd& end) override;

 private:
  std::ostream& stream_;
  std::string path_;
  std::string line_;  // a member so that its memory is reused
};

void TraceWriter::OnRound(long round) {
  stream_ << fmt::format("# round {}{}\n", round,
                         round == 1 ? "; later rounds are shown only if they fail" : "");
}

void TraceWriter::OnScript(const ScriptBegin& script) {
  path_ = Printable(script.path);
  stream_ << "# " << path_ << '\n';
}

void TraceWriter::OnPlace(const ChainPlace& place) {
  stream_ << fmt::format("# --chain {} --tap {}\n", fmt::join(place.ir_lengths, ","),
                         place.tap + 1);
}

void TraceWriter::OnCall(const CallEvent& call) {
  const CallFields fields = FieldsOf(call.call);
  line_.assign(path_);
  if (call.source.line != 0) line_.append(":").append(fmt::format_int(call.source.line).c_str());
  if (call.source.section != nullptr)
    line_ += fmt::format(" [{}]", Printable(*call.source.section));
  line_.append(" ").append(FunctionOf(call.call)) += '(';
  AppendFields(fields.arguments, ", ", line_);
  line_.append(") = ").append(fmt::format_int(call.result).c_str());
  if (!fields.outputs.empty()) line_ += "  ";
  AppendFields(fields.outputs, " ", line_);
  for (const Comparison& comparison : call.comparisons) Append(comparison, line_);
  stream_ << (line_ += '\n');
}

void TraceWriter::OnScriptEnd(const ScriptEnd& end) {
  stream_ << (end.ran ? "# ran\n" : "# failed\n");
}

}  // namespace

std::unique_ptr<Output> MakeTrace(std::ostream& stream) {
  return std::make_unique<TraceWriter>(stream);
}

}  // namespace icehost
