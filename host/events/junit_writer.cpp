// Writes the results of a run as JUnit XML, which CI servers read.
#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/events/call_fields.h"
#include "host/events/events.h"
#include "host/events/run_writers.h"
#include "host/system/text.h"

namespace icehost {
namespace {

// The maximum number of bytes kept of a script's messages, and also of its warnings.
constexpr std::size_t kMostTextBytes = 1U << 20U;
// The maximum number of faults described for one case.
constexpr long kMostDescribed = 10;

// The reasons why a case failed.
struct Fault {
  bool error;           // false for an unexpected value or a failed call
  std::string message;  // the message of the first fault
  std::string text;     // a line for each of the first faults, with its place
  long count = 0;
};

struct Case {
  std::string name;
  int line;
  bool reached = false;
  RunTime time{0};
  std::optional<Fault> fault{};
};

struct LimitedText {
  std::string text;
  std::size_t lost = 0;

  void Append(std::string_view more) {
    const std::size_t kept = std::min(more.size(), kMostTextBytes - text.size());
    text += more.substr(0, kept);
    lost += more.size() - kept;
  }
};

// The results of a script.
struct Suite {
  RunScript script;
  std::vector<Case> cases{};                            // sections, or lines with an expectation
  std::unordered_map<int, std::size_t> case_of_line{};  // for a GPIO script: indexes into `cases`
  Case whole{"(script)", 1};                            // used for faults outside all other cases
  RunTime begun_at{0};
  RunTime time{0};
  LimitedText output{};
  LimitedText warnings{};
};

struct Counts {
  std::size_t tests = 0;
  std::size_t failures = 0;
  std::size_t errors = 0;
  std::size_t skipped = 0;
  RunTime time{0};
};

// Adds a case for each section of a JTAG script.
void AddSections(const Plan& plan, std::vector<Case>& cases) {
  for (const JtagOperation& operation : plan.jtag) {
    cases.push_back({operation.section, operation.line});
  }
}

// Adds a case for each line with an expectation in a GPIO script.
void AddLines(const Plan& plan, Suite& suite) {
  if (!plan.jtag.empty()) return;
  for (const Expectation& expected : plan.expectations) {
    suite.case_of_line[expected.place.line] = suite.cases.size();
    suite.cases.push_back({fmt::format("line {}", expected.place.line), expected.place.line});
  }
}

bool HasFault(const Suite& suite) {
  return suite.whole.fault.has_value() ||
         std::any_of(suite.cases.begin(), suite.cases.end(),
                     [](const Case& one) { return one.fault.has_value(); });
}

std::vector<const Case*> ShownCases(const Suite& suite) {
  std::vector<const Case*> cases;
  for (const Case& one : suite.cases) cases.push_back(&one);
  if (cases.empty() || suite.whole.fault.has_value()) cases.push_back(&suite.whole);
  return cases;
}

Counts CountsOf(const Suite& suite) {
  Counts counts;
  for (const Case* const one : ShownCases(suite)) {
    ++counts.tests;
    if (one->fault.has_value()) {
      ++(one->fault->error ? counts.errors : counts.failures);
    } else if (!one->reached) {
      ++counts.skipped;
    }
  }
  counts.time = suite.time;
  return counts;
}

std::string SecondsText(RunTime time) {
  return fmt::format("{:.6f}", std::chrono::duration<double>(time).count());
}

std::string AttributesOf(const Counts& counts) {
  return fmt::format(R"(tests="{}" failures="{}" errors="{}" skipped="{}" time="{}")", counts.tests,
                     counts.failures, counts.errors, counts.skipped, SecondsText(counts.time));
}

// Applies XmlText to each line and keeps the line feeds.
std::string XmlLines(std::string_view text) {
  std::string lines;
  for (std::size_t end = 0; (end = text.find('\n')) != std::string_view::npos;) {
    lines += XmlText(text.substr(0, end)) + '\n';
    text.remove_prefix(end + 1);
  }
  return lines + XmlText(text);
}

// Collects the results and writes them at the end of the run.
class JUnitWriter : public Output, public EventListener {
 public:
  // `stream` must outlive the writer.
  explicit JUnitWriter(std::ostream& stream) : stream_(stream) {}
  void OnRunBegin(const RunBegin& run) override;
  void OnRound(long round) override { round_ = fmt::format("round {}: ", round); }
  void OnScript(const ScriptBegin& script) override;
  void OnCall(const CallEvent& call) override;
  void OnMessage(const char* text) override;
  void OnNotice(const Notice& notice) override;
  void OnScriptEnd(const ScriptEnd& end) override;
  void OnRunEnd(const RunEnd& end) override;

 private:
  Suite& Current() { return suite_ != nullptr ? *suite_ : suites_.front(); }
  // Returns the case for calls from `source`, or null.
  Case* CaseOf(const CallSource& source);
  // Adds the time since the last call to that call's case.
  void CountTime(RunTime now);
  void AddFault(Case& one, bool error, const std::string& message, const std::string& text);
  // Makes sure that at least one case fails if the exit status is not 0.
  void ExplainFailure(int status);
  void Write(const Suite& suite) const;
  void Write(const Suite& suite, const Case& one) const;
  void WriteText(const char* element, const LimitedText& kept) const;

  std::ostream& stream_;
  RunBegin run_;
  std::vector<Suite> suites_;
  Suite* suite_ = nullptr;  // the suite of the current script
  std::string round_;       // the text before each fault in a repeated run
  bool has_fault_ = false;  // the current script has a fault in this round
  // The errors of the current script, or of the run, that have no case.
  std::vector<std::string> errors_;
  Case* timed_ = nullptr;  // the case of the last call
  RunTime timed_from_{0};
  Case* failed_call_ = nullptr;  // the case of the last call that failed
  std::string failed_text_;
};

void JUnitWriter::OnRunBegin(const RunBegin& run) {
  run_ = run;
  for (const RunScript& script : run.scripts) {
    Suite& suite = suites_.emplace_back(Suite{script});
    if (script.plan == nullptr) continue;
    AddSections(*script.plan, suite.cases);
    AddLines(*script.plan, suite);
  }
}

void JUnitWriter::OnScript(const ScriptBegin& script) {
  suite_ = &suites_[script.index];
  suite_->begun_at = timed_from_ = script.at;
  timed_ = failed_call_ = nullptr;
  has_fault_ = false;
  errors_.clear();
  for (const SourceMark& mark : script.marks) {
    const Notice notice = {mark.severity, mark.text, script.name, {mark.line, mark.column}, {}, {}};
    OnNotice(notice);
  }
}

Case* JUnitWriter::CaseOf(const CallSource& source) {
  if (source.section == nullptr) {
    const auto found = suite_->case_of_line.find(source.line);
    return found != suite_->case_of_line.end() ? &suite_->cases[found->second] : nullptr;
  }
  const auto operation = static_cast<std::size_t>(source.operation);
  return operation < suite_->cases.size() ? &suite_->cases[operation] : nullptr;
}

void JUnitWriter::CountTime(RunTime now) {
  if (timed_ != nullptr) timed_->time += now - timed_from_;
  timed_from_ = now;
}

void JUnitWriter::OnCall(const CallEvent& call) {
  CountTime(call.at);
  timed_ = CaseOf(call.source);
  if (timed_ == nullptr) return;
  // A case counts as reached when the last call of its operation is made.
  if (!AsksForInterface(call) && call.As<InsertCall>() == nullptr) timed_->reached = true;
  if (call.result >= 0) return;
  failed_call_ = timed_;
  failed_text_ = fmt::format("{} returned {}", FunctionOf(call.call), call.result);
}

void JUnitWriter::OnMessage(const char* text) {
  Current().output.Append(text);
}

void JUnitWriter::OnNotice(const Notice& notice) {
  const std::string text = PlacedText(notice);
  if (notice.severity != Severity::kError) {
    return Current().warnings.Append(text + '\n');
  }
  Case* const one = suite_ != nullptr ? CaseOf(notice.source) : nullptr;
  if (one != nullptr) return AddFault(*one, notice.place.column == 0, notice.text, text);
  if (errors_.size() == kMostDescribed) errors_.pop_back();  // the last error is the reason
  errors_.push_back(text);
}

void JUnitWriter::AddFault(Case& one, bool error, const std::string& message,
                           const std::string& text) {
  has_fault_ = true;
  if (!one.fault.has_value()) one.fault = Fault{error, message, ""};
  one.fault->error |= error;
  if (++one.fault->count <= kMostDescribed) one.fault->text += round_ + text + '\n';
}

void JUnitWriter::OnScriptEnd(const ScriptEnd& end) {
  CountTime(end.at);
  suite_->time += end.at - suite_->begun_at;
  suite_->whole.time = suite_->time;
  suite_->whole.reached = true;
  if (!end.ran && !has_fault_ && failed_call_ != nullptr) {
    AddFault(*failed_call_, false, failed_text_,
             fmt::format("{}:{}: {}", suite_->script.path, failed_call_->line, failed_text_));
  } else if (!end.ran && !has_fault_) {
    const std::string why = errors_.empty() ? "failed" : errors_.back();
    AddFault(suite_->whole, true, why, fmt::format("{}", fmt::join(errors_, "\n")));
  }
  suite_ = nullptr;
  errors_.clear();
}

void JUnitWriter::ExplainFailure(int status) {
  if (status == 0 || std::any_of(suites_.begin(), suites_.end(), HasFault)) return;
  const std::string why = fmt::format("icehost exited with status {}", status);
  AddFault(suites_.front().whole, true, errors_.empty() ? why : errors_.front(),
           fmt::format("{}", fmt::join(errors_, "\n")));
}

void JUnitWriter::OnRunEnd(const RunEnd& end) {
  ExplainFailure(end.status);
  Counts all;
  for (const Suite& suite : suites_) {
    const Counts counts = CountsOf(suite);
    all.tests += counts.tests;
    all.failures += counts.failures;
    all.errors += counts.errors;
    all.skipped += counts.skipped;
  }
  all.time = end.at;
  stream_ << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  stream_ << fmt::format("<testsuites name=\"icehost\" {}>\n", AttributesOf(all));
  for (const Suite& suite : suites_) Write(suite);
  stream_ << "</testsuites>\n";
}

void JUnitWriter::Write(const Suite& suite) const {
  const auto begun = std::chrono::floor<std::chrono::seconds>(run_.started + suite.begun_at);
  stream_ << fmt::format("<testsuite name=\"{}\" {} timestamp=\"{:%Y-%m-%dT%H:%M:%S}\">\n",
                         XmlText(suite.script.path), AttributesOf(CountsOf(suite)),
                         fmt::gmtime(std::chrono::system_clock::to_time_t(begun)));
  stream_ << fmt::format(
      "<properties>\n<property name=\"icehost\" value=\"{}\"/>\n"
      "<property name=\"arguments\" value=\"{}\"/>\n<property name=\"probe\" value=\"{}\"/>\n"
      "</properties>\n",
      XmlText(run_.version), XmlText(fmt::format("{}", fmt::join(run_.arguments, " "))),
      XmlText(run_.probe));
  for (const Case* const one : ShownCases(suite)) Write(suite, *one);
  WriteText("system-out", suite.output);
  WriteText("system-err", suite.warnings);
  stream_ << "</testsuite>\n";
}

void JUnitWriter::Write(const Suite& suite, const Case& one) const {
  const std::string path = XmlText(suite.script.path);
  stream_ << fmt::format(R"(<testcase name="{}" classname="{}" time="{}" file="{}" line="{}")",
                         XmlText(one.name), path, SecondsText(one.time), path, one.line);
  if (one.fault.has_value()) {
    const Fault& fault = *one.fault;
    const char* const element = fault.error ? "error" : "failure";
    const std::string times = fault.count == 1 ? "" : fmt::format(" ({} times)", fault.count);
    stream_ << fmt::format(">\n<{} type=\"{}\" message=\"{}\">{}</{}>\n</testcase>\n", element,
                           fault.error ? "run" : "value", XmlText(fault.message + times),
                           XmlLines(fault.text), element);
  } else if (!one.reached) {
    stream_ << ">\n<skipped message=\"not reached\"/>\n</testcase>\n";
  } else {
    stream_ << "/>\n";
  }
}

void JUnitWriter::WriteText(const char* element, const LimitedText& kept) const {
  if (kept.text.empty()) return;
  stream_ << fmt::format("<{}>{}", element, XmlLines(kept.text));
  if (kept.lost > 0) stream_ << fmt::format("\n({} more bytes)", kept.lost);
  stream_ << fmt::format("</{}>\n", element);
}

}  // namespace

std::unique_ptr<Output> MakeJUnit(std::ostream& stream) {
  return std::make_unique<JUnitWriter>(stream);
}

}  // namespace icehost
