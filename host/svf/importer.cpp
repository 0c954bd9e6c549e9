#include "host/svf/importer.h"

#include <fmt/format.h>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "host/svf/form.h"
#include "host/svf/statements.h"
#include "host/system/interrupt.h"

namespace icehost {
namespace {

constexpr std::size_t kBitsForByte = 4;

constexpr const char* kRunTestForm =
    "expected RUNTEST [state] [count TCK] [time SEC [MAXIMUM time SEC]] [ENDSTATE state]";
constexpr const char* kStableState = "expected a stable state: IDLE, RESET, DRPAUSE or IRPAUSE";

// Reads the words of one statement in order.
class Words {
 public:
  explicit Words(const SvfStatement& statement) : statement_(statement) {}

  bool AtEnd() const { return at_ == statement_.words.size(); }
  bool Is(const char* upper) const { return !AtEnd() && IsSvfWord(statement_.words[at_], upper); }
  bool Take(const char* upper) {
    const bool is = Is(upper);
    if (is) Skip();
    return is;
  }
  // Number and State convert the next word without skipping it.
  std::optional<double> Number() const {
    return AtEnd() ? std::nullopt : SvfNumber(statement_.words[at_]);
  }
  std::optional<TapState> State() const {
    return AtEnd() ? std::nullopt : SvfState(statement_.words[at_]);
  }
  void Skip() { ++at_; }
  std::optional<double> TakeNumber() {
    const auto number = Number();
    if (number.has_value()) Skip();
    return number;
  }
  // If the next word is a stable state, stores it in `state` and skips it.
  bool TakeStable(TapState& state) {
    const auto next = State();
    if (!next.has_value() || !IsStable(*next)) return false;
    state = *next;
    Skip();
    return true;
  }
  // Returns the next word, or the keyword if no word is left.
  const SvfToken& Next() const { return AtEnd() ? statement_.keyword : statement_.words[at_]; }

 private:
  const SvfStatement& statement_;
  std::size_t at_ = 0;
};

// Reads the count and the times of a RUNTEST. Returns null, or why the next word is wrong.
const char* TakeStay(Words& words, SvfRunTest& run) {
  auto number = words.TakeNumber();
  if (!number.has_value()) return kRunTestForm;
  if (words.Is("SCK")) return "a probe does not have SCK, a clock of the target system";
  if (words.Take("TCK")) {
    run.cycles = *number;
    number = words.TakeNumber();
    if (!number.has_value()) return nullptr;
  }
  if (!words.Take("SEC")) return kRunTestForm;
  run.seconds = *number;
  if (!words.Take("MAXIMUM")) return nullptr;
  run.most_seconds = words.Number();
  if (!run.most_seconds.has_value()) return kRunTestForm;
  if (*run.most_seconds < run.seconds) return "the maximum is less than the minimum before it";
  words.Skip();
  return words.Take("SEC") ? nullptr : kRunTestForm;
}

// Reads statements, remembers settings for later statements, and passes their effects to `form`.
class Importer {
 public:
  Importer(SvfForm& form, std::size_t most, Problems& problems)
      : form_(form), most_(most), problems_(problems) {}

  void Take(const SvfStatement& statement);
  // Returns whether reading should stop.
  bool IsFull() const { return form_.Size() > most_ || problems_.IsFull(); }

 private:
  using Handler = void (Importer::*)(const SvfStatement&);
  // The bits of a header or trailer, which are shifted before or after a scan's own bits.
  struct Frame {
    SvfRegister remembered;
    SvfShift shift;
  };
  struct Column {
    SvfRegister scan;
    Frame header;
    Frame trailer;
  };

  static Handler HandlerOf(const SvfToken& keyword);
  void Sir(const SvfStatement& statement) { TakeScan(ir_, true, statement); }
  void Sdr(const SvfStatement& statement) { TakeScan(dr_, false, statement); }
  void Hir(const SvfStatement& statement) { TakeFrame(ir_.header, statement); }
  void Hdr(const SvfStatement& statement) { TakeFrame(dr_.header, statement); }
  void Tir(const SvfStatement& statement) { TakeFrame(ir_.trailer, statement); }
  void Tdr(const SvfStatement& statement) { TakeFrame(dr_.trailer, statement); }
  void EndIr(const SvfStatement& statement) { TakeEndState(true, statement); }
  void EndDr(const SvfStatement& statement) { TakeEndState(false, statement); }
  void Frequency(const SvfStatement& statement);
  void RunTest(const SvfStatement& statement);
  void State(const SvfStatement& statement);
  void Trst(const SvfStatement& statement);
  void Pio(const SvfStatement& /*statement*/) { form_.Pio(); }

  std::optional<SvfShift> TakeRegister(SvfRegister& remembered, const SvfStatement& statement);
  void TakeFrame(Frame& frame, const SvfStatement& statement);
  void TakeScan(Column& column, bool ir, const SvfStatement& statement);
  void TakeEndState(bool ir, const SvfStatement& statement);
  void Refuse(const SvfToken& token, const std::string& why) { problems_.Error(token.place, why); }

  SvfForm& form_;
  std::size_t most_;
  Problems& problems_;
  Column ir_;
  Column dr_;
  // The states of the last RUNTEST, which also apply to a later RUNTEST without states.
  TapState run_state_ = TapState::kRunTestIdle;
  TapState run_end_ = TapState::kRunTestIdle;
};

Importer::Handler Importer::HandlerOf(const SvfToken& keyword) {
  constexpr std::pair<const char*, Handler> kHandlers[] = {
      {"SDR", &Importer::Sdr},     {"SIR", &Importer::Sir},     {"HDR", &Importer::Hdr},
      {"HIR", &Importer::Hir},     {"TDR", &Importer::Tdr},     {"TIR", &Importer::Tir},
      {"ENDDR", &Importer::EndDr}, {"ENDIR", &Importer::EndIr}, {"RUNTEST", &Importer::RunTest},
      {"STATE", &Importer::State}, {"TRST", &Importer::Trst},   {"FREQUENCY", &Importer::Frequency},
      {"PIO", &Importer::Pio},     {"PIOMAP", &Importer::Pio},
  };
  for (const auto& [name, handler] : kHandlers) {
    if (IsSvfWord(keyword, name)) return handler;
  }
  return nullptr;
}

void Importer::Take(const SvfStatement& statement) {
  const SvfToken& keyword = statement.keyword;
  const Handler handler = HandlerOf(keyword);
  if (handler == nullptr) {
    return Refuse(keyword, fmt::format("SVF has no statement {}", Quoted(keyword)));
  }
  if (statement.is_long) {
    return Refuse(keyword, fmt::format("the statement has more than {} words", kMostWords));
  }
  form_.BeginStatement(statement);
  (this->*handler)(statement);
}

std::optional<SvfShift> Importer::TakeRegister(SvfRegister& remembered,
                                               const SvfStatement& statement) {
  return remembered.Take(statement, kBitsForByte * most_, problems_);
}

void Importer::TakeFrame(Frame& frame, const SvfStatement& statement) {
  auto shift = TakeRegister(frame.remembered, statement);
  if (shift.has_value()) frame.shift = std::move(*shift);
}

// A whole scan consists of the header, the statement's own bits and the trailer.
void Importer::TakeScan(Column& column, bool ir, const SvfStatement& statement) {
  const auto own = TakeRegister(column.scan, statement);
  if (!own.has_value()) return;
  SvfShift whole = column.header.shift;
  whole.Append(*own);
  whole.Append(column.trailer.shift);
  if (whole.tdi.empty()) return Refuse(statement.keyword, "a scan must have at least one bit");
  form_.Scan(ir, whole);
}

void Importer::TakeEndState(bool ir, const SvfStatement& statement) {
  Words words(statement);
  TapState state{};
  if (words.TakeStable(state) && words.AtEnd()) return form_.EndState(ir, state);
  Refuse(words.Next(), kStableState);
}

void Importer::Frequency(const SvfStatement& statement) {
  Words words(statement);
  if (words.AtEnd()) return form_.Frequency(std::nullopt);
  const auto hz = words.TakeNumber();
  if (hz.value_or(0) > 0 && words.Take("HZ") && words.AtEnd()) return form_.Frequency(hz);
  Refuse(words.Next(), "expected FREQUENCY, or FREQUENCY number HZ");
}

void Importer::RunTest(const SvfStatement& statement) {
  Words words(statement);
  const auto refuse = [&](const char* why) { Refuse(words.Next(), why); };
  SvfRunTest run{run_state_, run_end_, 0, 0, std::nullopt};
  if (words.State().has_value()) {
    if (!words.TakeStable(run.state)) return refuse(kStableState);
    run.end = run.state;
  }
  if (const char* const why = TakeStay(words, run); why != nullptr) return refuse(why);
  if (words.Take("ENDSTATE") && !words.TakeStable(run.end)) return refuse(kStableState);
  if (!words.AtEnd()) return refuse(kRunTestForm);
  run_state_ = run.state;
  run_end_ = run.end;
  form_.RunTest(run);
}

void Importer::State(const SvfStatement& statement) {
  Words words(statement);
  if (words.AtEnd()) return Refuse(statement.keyword, "expected a state after STATE");
  std::vector<TapState> path;
  for (; words.State().has_value(); words.Skip()) path.push_back(*words.State());
  if (!words.AtEnd()) {
    return Refuse(words.Next(), fmt::format("SVF has no state {}", Quoted(words.Next())));
  }
  if (!IsStable(path.back())) return Refuse(statement.words.back(), kStableState);
  form_.State(path);
}

void Importer::Trst(const SvfStatement& statement) {
  constexpr std::pair<const char*, SvfTrst> kModes[] = {
      {"ON", SvfTrst::kOn},
      {"OFF", SvfTrst::kOff},
      {"Z", SvfTrst::kZ},
      {"ABSENT", SvfTrst::kAbsent},
  };
  if (statement.words.size() != 1)
    return Refuse(statement.keyword, "expected TRST ON, OFF, Z or ABSENT");
  const SvfToken& word = statement.words[0];
  for (const auto& [name, mode] : kModes) {
    if (IsSvfWord(word, name)) return form_.Trst(mode);
  }
  Refuse(word, fmt::format("expected ON, OFF, Z or ABSENT, found {}", Quoted(word)));
}

}  // namespace

Problems ImportSvf(const SvfImport& import, std::string_view text, std::ostream* script,
                   const std::function<void(std::size_t)>& on_progress) {
  Problems problems(import.keeping);
  const auto form =
      import.gpio ? MakeGpioForm(problems, script, import.tck_hz) : MakeJtagForm(problems, script);
  Importer importer(*form, import.most, problems);
  form->Begin(import.name);
  SvfReader reader(text);
  Place last{1, 1};
  bool empty = true;
  for (auto statement = reader.Next(problems); statement.has_value() && !importer.IsFull();
       statement = reader.Next(problems)) {
    ThrowIfInterrupted();
    empty = false;
    last = statement->keyword.place;
    importer.Take(*statement);
    on_progress(reader.BytesRead());
  }
  if (empty && !problems.HasErrors()) problems.Error(last, "the file contains no statement");
  // A script that is too large is cut, so nothing can be said about how it ends.
  if (form->Size() <= import.most) form->End();
  if (form->Size() > import.most) {
    const std::string why = fmt::format(
        "the script would be larger than {} MiB (--size-limit allows more)", import.most >> 20U);
    problems.Error(last, why);
  }
  problems.Sort();
  return problems;
}

}  // namespace icehost
