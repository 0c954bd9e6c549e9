// Writes the events of a run as JSON lines, for programs.
#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "host/events/events.h"
#include "host/events/json_call.h"
#include "host/events/run_writers.h"
#include "host/system/text.h"

namespace icehost {
namespace {

// The maximum number of bytes kept of a plug-in message while its line feed is missing.
constexpr std::size_t kMostPendingBytes = 64U << 10U;

const char* SeverityText(Severity severity) {
  if (severity == Severity::kNote) return "note";
  return severity == Severity::kError ? "error" : "warning";
}

const char* OutputText(Expectation::Of of) {
  if (of == Expectation::Of::kPins) return "data";
  return of == Expectation::Of::kIr ? "ir_out" : "dr_out";
}

// Returns a text such as "2026-01-31T08:15:00.125Z".
std::string UtcText(std::chrono::system_clock::time_point time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
  const auto rest = std::chrono::floor<std::chrono::milliseconds>(time - seconds);
  return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z",
                     fmt::gmtime(std::chrono::system_clock::to_time_t(seconds)), rest.count());
}

std::string ArrayText(const std::vector<std::string>& texts) {
  std::string array;
  for (const std::string& text : texts) {
    array.append(array.empty() ? "[" : ",").append(JsonText(text));
  }
  return array.empty() ? "[]" : array + ']';
}

std::string ValuesText(const ValueCounts& values) {
  return fmt::format(R"("values":{{"met":{},"not_met":{},"not_reached":{}}})", values.met,
                     values.unmet, values.unread);
}

// Returns the end of the first piece of a long text. It is never inside a UTF-8 character.
std::size_t PieceEnd(std::string_view text) {
  std::size_t end = kMostPendingBytes;
  while (end > kMostPendingBytes - 4 && (text[end] & 0xC0) == 0x80) --end;
  return end;
}

// Writes one object in ASCII per line. The first key names the kind of object (see docs/json.md).
class JsonWriter : public Output, public EventListener {
 public:
  // `stream` must outlive the writer.
  explicit JsonWriter(std::ostream& stream) : stream_(stream) {}
  void OnRunBegin(const RunBegin& run) override;
  void OnRound(long round) override;
  void OnScript(const ScriptBegin& script) override;
  void OnPlace(const ChainPlace& place) override;
  void OnResetRequest() override;
  void OnCall(const CallEvent& call) override;
  void OnMessage(const char* text) override;
  void OnNotice(const Notice& notice) override;
  void OnScriptEnd(const ScriptEnd& end) override;
  void OnRunEnd(const RunEnd& end) override;

 private:
  void WriteMessage(std::string_view text);
  // Writes all pieces of a long text except the last piece, which it returns.
  std::string_view WritePieces(std::string_view text);
  void WriteProblem(const SourceMark& mark);
  void WriteUnread(const Expectation& expected);
  // Writes message_ if it is not empty, and then line_.
  void Write();

  std::ostream& stream_;
  std::vector<RunScript> scripts_;
  std::size_t script_ = 0;  // the index of the script that began last
  bool in_script_ = false;
  std::string line_;     // a member so that its memory is reused
  std::string message_;  // the plug-in's unfinished line so far
};

void JsonWriter::OnRunBegin(const RunBegin& run) {
  scripts_ = run.scripts;
  std::vector<std::string> paths;
  for (const RunScript& script : run.scripts) paths.push_back(script.path);
  line_ = fmt::format(
      R"({{"schema":"icehost-run","version":2,"icehost":{},"arguments":{},"probe":{},"scripts":{},"started":"{}"}})"
      "\n",
      JsonText(run.version), ArrayText(run.arguments), JsonText(run.probe), ArrayText(paths),
      UtcText(run.started));
  Write();
}

void JsonWriter::OnRound(long round) {
  line_ = fmt::format("{{\"round\":{}}}\n", round);
  Write();
}

void JsonWriter::OnScript(const ScriptBegin& script) {
  script_ = script.index;
  in_script_ = true;
  line_ = fmt::format("{{\"begin\":{},\"script\":{},\"at_us\":{}}}\n", JsonText(script.path),
                      script_, script.at.count());
  Write();
  for (const SourceMark& mark : script.marks) WriteProblem(mark);
}

void JsonWriter::WriteProblem(const SourceMark& mark) {
  line_ = fmt::format(
      R"({{"severity":"{}","by":"check","text":{},"script":{},"line":{},"column":{}}})"
      "\n",
      SeverityText(mark.severity), JsonText(mark.text), script_, mark.line, mark.column);
  Write();
}

void JsonWriter::OnPlace(const ChainPlace& place) {
  line_ = fmt::format("{{\"chain\":[{}],\"tap\":{}}}\n", fmt::join(place.ir_lengths, ","),
                      place.tap + 1);
  Write();
}

void JsonWriter::OnResetRequest() {
  line_ = "{\"request\":\"reset TAP\"}\n";
  Write();
}

void JsonWriter::OnCall(const CallEvent& call) {
  line_.clear();
  AppendCall(call, script_, line_);
  Write();
}

void JsonWriter::OnMessage(const char* text) {
  std::string_view rest = text;
  for (std::size_t end = 0; (end = rest.find('\n')) != std::string_view::npos;) {
    WriteMessage(message_.append(rest.substr(0, end + 1)));
    message_.clear();
    rest.remove_prefix(end + 1);
  }
  message_ += rest;
  message_.erase(0, message_.size() - WritePieces(message_).size());
}

void JsonWriter::WriteMessage(std::string_view text) {
  const std::string_view last = WritePieces(text);
  stream_ << "{\"message\":" << JsonText(last) << "}\n";
}

std::string_view JsonWriter::WritePieces(std::string_view text) {
  while (text.size() > kMostPendingBytes) {
    const std::size_t end = PieceEnd(text);
    stream_ << "{\"message\":" << JsonText(text.substr(0, end)) << "}\n";
    text.remove_prefix(end);
  }
  return text;
}

void JsonWriter::OnNotice(const Notice& notice) {
  line_ = fmt::format(R"({{"severity":"{}","by":"run","text":{})", SeverityText(notice.severity),
                      JsonText(notice.text));
  if (in_script_) AppendMember(R"(,"script":)", static_cast<long>(script_), line_);
  if (notice.place.line != 0) AppendMember(R"(,"line":)", notice.place.line, line_);
  if (notice.place.column != 0) AppendMember(R"(,"column":)", notice.place.column, line_);
  AppendSection(notice.source, line_);
  AppendMember(R"(,"at_us":)", notice.at.count(), line_);
  line_ += "}\n";
  Write();
}

void JsonWriter::OnScriptEnd(const ScriptEnd& end) {
  for (const Expectation* const expected : end.unread) WriteUnread(*expected);
  line_ = fmt::format("{{\"end\":{},\"script\":{},{},\"at_us\":{}}}\n", end.ran, script_,
                      ValuesText(end.values), end.at.count());
  Write();
  in_script_ = false;
}

void JsonWriter::WriteUnread(const Expectation& expected) {
  const std::vector<JtagOperation>& operations = scripts_[script_].plan->jtag;
  line_ = fmt::format(R"({{"not_reached":"{}","script":{},"line":{},"column":{})",
                      OutputText(expected.of), script_, expected.place.line, expected.place.column);
  if (expected.operation < operations.size()) {
    const int operation = static_cast<int>(expected.operation);
    AppendSection({0, operation, &operations[expected.operation].section}, line_);
  }
  line_ += "}\n";
  Write();
}

void JsonWriter::OnRunEnd(const RunEnd& end) {
  for (script_ = end.begun; script_ < scripts_.size(); ++script_) {
    line_ = fmt::format("{{\"not_reached\":\"script\",\"script\":{}}}\n", script_);
    Write();
  }
  const RunCounts& counts = end.counts;
  const std::string cycles = end.tck_cycles.has_value() ? std::to_string(*end.tck_cycles) : "null";
  line_ = fmt::format(R"({{"totals":{{"operations":{},"tck_cycles":{},"bits":{},"reads":{}}},{})",
                      counts.operations, cycles, counts.bits, counts.reads, ValuesText(end.values));
  if (end.rounds.has_value()) {
    AppendMember(R"(,"rounds":)", *end.rounds, line_);
    AppendMember(R"(,"failed_rounds":)", end.failed_rounds, line_);
  }
  line_ += fmt::format(R"(,"verdict":"{}","status":{},"took_us":{}}})"
                       "\n",
                       end.verdict, end.status, end.at.count());
  Write();
}

void JsonWriter::Write() {
  if (!message_.empty()) {
    WriteMessage(message_);
    message_.clear();
  }
  stream_ << line_;
}

}  // namespace

std::unique_ptr<Output> MakeJson(std::ostream& stream) {
  return std::make_unique<JsonWriter>(stream);
}

}  // namespace icehost
