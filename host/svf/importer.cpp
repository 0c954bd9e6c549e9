#include "host/svf/importer.h"

#include <fmt/format.h>

#include <optional>
#include <utility>

#include "host/svf/runtest.h"
#include "host/svf/scan_sequence.h"
#include "host/svf/scan_values.h"
#include "host/svf/script_writer.h"
#include "host/svf/statements.h"
#include "host/system/interrupt.h"

namespace icehost {
namespace {

// More are hardly read.
constexpr long kMostErrors = 50;

class Importer {
 public:
  Importer(std::size_t most, Problems& problems) : most_(most), problems_(problems) {}

  void Take(const SvfStatement& statement);
  void End();
  // Nothing more is to be taken.
  bool IsFull() const;
  std::string Script(const std::string& name) const {
    return ScriptHead(name, scans_.LoadsAgain()) + script_.Text();
  }

 private:
  using Handler = void (Importer::*)(const SvfStatement&);
  static Handler HandlerOf(const SvfToken& keyword);
  void Sir(const SvfStatement& statement);
  void Sdr(const SvfStatement& statement);
  void Hir(const SvfStatement& statement) { TakeFrame(hir_register_, hir_, statement); }
  void Hdr(const SvfStatement& statement) { TakeFrame(hdr_register_, hdr_, statement); }
  void Tir(const SvfStatement& statement) { TakeFrame(tir_register_, tir_, statement); }
  void Tdr(const SvfStatement& statement) { TakeFrame(tdr_register_, tdr_, statement); }
  void EndState(const SvfStatement& statement);
  void Frequency(const SvfStatement& statement);
  void RunTest(const SvfStatement& statement);
  void State(const SvfStatement& statement);
  void Trst(const SvfStatement& statement);
  void Pio(const SvfStatement& statement);

  void TakeFrame(SvfRegister& remembered, SvfShift& frame, const SvfStatement& statement);
  std::optional<SvfShift> TakeScan(SvfRegister& remembered, const SvfShift& header,
                                   const SvfShift& trailer, const SvfStatement& statement);
  void Reset(const SvfStatement& statement);
  void LeaveOut(const SvfStatement& statement, const std::string& why);
  void Refuse(const SvfToken& token, const std::string& why) { problems_.Error(token.place, why); }

  std::size_t most_;
  Problems& problems_;
  ScriptWriter script_;
  ScanSequence scans_{script_, problems_};
  SvfRegister sir_, sdr_, hir_register_, hdr_register_, tir_register_, tdr_register_;
  SvfShift hir_, hdr_, tir_, tdr_;  // headers and trailers in force
  SvfRunTest run_test_;
};

Importer::Handler Importer::HandlerOf(const SvfToken& keyword) {
  constexpr std::pair<const char*, Handler> kHandlers[] = {
      {"SDR", &Importer::Sdr},         {"SIR", &Importer::Sir},
      {"HDR", &Importer::Hdr},         {"HIR", &Importer::Hir},
      {"TDR", &Importer::Tdr},         {"TIR", &Importer::Tir},
      {"ENDDR", &Importer::EndState},  {"ENDIR", &Importer::EndState},
      {"RUNTEST", &Importer::RunTest}, {"STATE", &Importer::State},
      {"TRST", &Importer::Trst},       {"FREQUENCY", &Importer::Frequency},
      {"PIO", &Importer::Pio},         {"PIOMAP", &Importer::Pio},
  };
  for (const auto& [name, handler] : kHandlers) {
    if (IsSvfWord(keyword, name)) return handler;
  }
  return nullptr;
}

void Importer::Take(const SvfStatement& statement) {
  const Handler handler = HandlerOf(statement.keyword);
  if (handler == nullptr) {
    return Refuse(statement.keyword,
                  fmt::format("SVF has no statement {}", Quoted(statement.keyword)));
  }
  if (statement.is_long) {
    return Refuse(statement.keyword,
                  fmt::format("the statement has more than {} words", kMostWords));
  }
  (this->*handler)(statement);
  if (script_.Text().size() <= most_) return;
  Refuse(statement.keyword, fmt::format("the script becomes larger than {} MiB; --size-limit lets "
                                        "more out",
                                        most_ >> 20U));
}

bool Importer::IsFull() const {
  return script_.Text().size() > most_ || problems_.Errors() >= kMostErrors;
}

// A header is shifted before the scan's own bits, a trailer behind them.
std::optional<SvfShift> Importer::TakeScan(SvfRegister& remembered, const SvfShift& header,
                                           const SvfShift& trailer, const SvfStatement& statement) {
  const auto own = remembered.Take(statement, problems_);
  if (!own.has_value()) return std::nullopt;
  if (own->tdi.empty()) {
    Refuse(statement.keyword, "a scan of 0 bits cannot be said in a script");
    return std::nullopt;
  }
  SvfShift whole = header;
  whole.Append(*own);
  whole.Append(trailer);
  run_test_.BeginScan();
  return whole;
}

void Importer::Sir(const SvfStatement& statement) {
  const auto shift = TakeScan(sir_, hir_, tir_, statement);
  if (shift.has_value()) scans_.Ir(statement.keyword.place, *shift);
}

void Importer::Sdr(const SvfStatement& statement) {
  const auto shift = TakeScan(sdr_, hdr_, tdr_, statement);
  if (shift.has_value()) scans_.Dr(statement.keyword.place, *shift);
}

void Importer::TakeFrame(SvfRegister& remembered, SvfShift& frame, const SvfStatement& statement) {
  if (auto shift = remembered.Take(statement, problems_); shift.has_value()) {
    frame = std::move(*shift);
  }
}

void Importer::EndState(const SvfStatement& statement) {
  if (statement.words.size() == 1 && IsSvfWord(statement.words[0], "IDLE")) {
    return LeaveOut(statement, "every scan of a script ends there");
  }
  Refuse(statement.keyword, "a script's scans end in Run-Test/Idle: IDLE is the one end state");
}

void Importer::Frequency(const SvfStatement& statement) {
  const auto& words = statement.words;
  if (words.empty() ||
      (words.size() == 2 && SvfNumber(words[0]).has_value() && IsSvfWord(words[1], "HZ"))) {
    return LeaveOut(statement, "the probe has its own");
  }
  Refuse(statement.keyword, "expected FREQUENCY, or FREQUENCY number HZ");
}

void Importer::RunTest(const SvfStatement& statement) {
  switch (run_test_.Take(statement, problems_)) {
    case SvfRunTest::Kind::kWrong:
      return;
    case SvfRunTest::Kind::kReset:
      return Reset(statement);
    case SvfRunTest::Kind::kIdle:
      return LeaveOut(statement, "a moment in Run-Test/Idle");
  }
}

void Importer::State(const SvfStatement& statement) {
  if (statement.words.empty()) return Refuse(statement.keyword, "STATE lacks its state");
  const auto words = static_cast<double>(statement.words.size());
  if (!run_test_.Idle(words, statement.keyword.place, problems_)) return;
  bool resets = false;
  for (const SvfToken& word : statement.words) {
    const bool reset = IsSvfWord(word, "RESET");
    resets = resets || reset;
    if (reset || IsSvfWord(word, "IDLE")) continue;
    return Refuse(word, fmt::format("a script cannot bring the TAP to {}: it knows RESET, before "
                                    "the first scan, and IDLE",
                                    Quoted(word)));
  }
  if (resets) return Reset(statement);
  LeaveOut(statement, "every scan of a script ends there");
}

void Importer::Trst(const SvfStatement& statement) {
  if (statement.words.size() != 1) return Refuse(statement.keyword, "expected TRST and one word");
  const SvfToken& word = statement.words[0];
  if (IsSvfWord(word, "ON")) {
    scans_.SetTrst(true);
    return Reset(statement);
  }
  if (!IsSvfWord(word, "OFF") && !IsSvfWord(word, "Z") && !IsSvfWord(word, "ABSENT")) {
    return Refuse(word, fmt::format("{} is none of ON, OFF, Z and ABSENT", Quoted(word)));
  }
  scans_.SetTrst(false);
  LeaveOut(statement, "the probe holds it off");
}

void Importer::Pio(const SvfStatement& statement) {
  Refuse(statement.keyword, "a JTAG script has no other pins than those of the TAP");
}

void Importer::Reset(const SvfStatement& statement) {
  scans_.Reset(statement.keyword.place);
  LeaveOut(statement,
           scans_.HasScanned() ? "no scan follows" : "for the probe to do before the first scan");
}

void Importer::LeaveOut(const SvfStatement& statement, const std::string& why) {
  const SvfToken& keyword = statement.keyword;
  std::string name(keyword.text);
  for (char& ch : name) ch = ch >= 'a' && ch <= 'z' ? static_cast<char>(ch - 'a' + 'A') : ch;
  script_.Comment(fmt::format("line {}: {} left out: {}", keyword.place.line, name, why));
}

void Importer::End() {
  scans_.End();
  if (!scans_.HasScanned() && !problems_.HasErrors()) {
    problems_.Error({1, 1}, "the file scans nothing: it has no SIR and no SDR");
  }
}

}  // namespace

ImportedSvf ImportSvf(const std::string& name, std::string_view text, std::size_t most) {
  ImportedSvf imported;
  Importer importer(most, imported.problems);
  SvfReader reader(text);
  for (auto statement = reader.Next(imported.problems); statement.has_value() && !importer.IsFull();
       statement = reader.Next(imported.problems)) {
    ThrowIfInterrupted();
    importer.Take(*statement);
  }
  importer.End();
  imported.problems.Sort();
  if (!imported.problems.HasErrors()) imported.script = importer.Script(name);
  return imported;
}

}  // namespace icehost
