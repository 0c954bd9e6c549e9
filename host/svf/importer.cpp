#include "host/svf/importer.h"

#include <fmt/format.h>

#include <optional>
#include <utility>

#include "base/text.h"
#include "host/svf/script_writer.h"
#include "host/svf/statements.h"
#include "host/system/interrupt.h"

namespace icehost {
namespace {

// A script cannot wait. A probe spends this much time from one scan to the next anyway, so the
// importer may leave it out.
constexpr double kMostIdleCycles = 16;
constexpr double kMostIdleSeconds = 1e-5;

constexpr const char* kRunTestForm =
    "expected RUNTEST [state] [count TCK] [time SEC [MAXIMUM time SEC]] [ENDSTATE state]";
constexpr const char* kRunTestStates =
    "a script stays in Run-Test/Idle: IDLE is the state, or RESET before the first scan";

// A walk over the words of one statement.
class Words {
 public:
  explicit Words(const SvfStatement& statement) : statement_(statement) {}

  bool AtEnd() const { return at_ == statement_.words.size(); }
  bool Is(const char* upper) const { return !AtEnd() && IsSvfWord(statement_.words[at_], upper); }
  bool Take(const char* upper) {
    const bool is = Is(upper);
    if (is) ++at_;
    return is;
  }
  std::optional<double> TakeNumber() {
    const auto number = AtEnd() ? std::nullopt : SvfNumber(statement_.words[at_]);
    if (number.has_value()) ++at_;
    return number;
  }
  // The next word, or the keyword at the end.
  const SvfToken& Next() const { return AtEnd() ? statement_.keyword : statement_.words[at_]; }

 private:
  const SvfStatement& statement_;
  std::size_t at_ = 0;
};

struct Stay {
  double cycles = 0;
  double seconds = 0;
};

// Reads a number with its unit, TCK or SEC, and all that follows up to the end state. Returns the
// error at the next word, or null.
const char* TakeStay(Words& words, Stay& stay) {
  auto number = words.TakeNumber();
  if (!number.has_value()) return kRunTestForm;
  if (words.Is("SCK")) return "a script has no system clock SCK";
  if (words.Take("TCK")) {
    stay.cycles = *number;
    number = words.TakeNumber();
    if (!number.has_value()) return nullptr;
  }
  if (!words.Take("SEC")) return kRunTestForm;
  stay.seconds = *number;
  if (!words.Take("MAXIMUM")) return nullptr;
  return words.TakeNumber().has_value() && words.Take("SEC") ? nullptr : kRunTestForm;
}

class Importer {
 public:
  Importer(std::size_t most, Problems& problems) : most_(most), problems_(problems) {}

  void Take(const SvfStatement& statement);
  void End();
  // Whether to stop reading.
  bool IsFull() const { return script_.Size() > most_ || problems_.IsFull(); }
  std::string Script(const std::string& name) const { return script_.Script(name); }

 private:
  using Handler = void (Importer::*)(const SvfStatement&);
  // The bits that are shifted before or after those of a scan.
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
  void Sir(const SvfStatement& statement);
  void Sdr(const SvfStatement& statement);
  void Hir(const SvfStatement& statement) { TakeFrame(ir_.header, statement); }
  void Hdr(const SvfStatement& statement) { TakeFrame(dr_.header, statement); }
  void Tir(const SvfStatement& statement) { TakeFrame(ir_.trailer, statement); }
  void Tdr(const SvfStatement& statement) { TakeFrame(dr_.trailer, statement); }
  void EndState(const SvfStatement& statement);
  void Frequency(const SvfStatement& statement);
  void RunTest(const SvfStatement& statement);
  void State(const SvfStatement& statement);
  void Trst(const SvfStatement& statement);
  void Pio(const SvfStatement& statement);

  void TakeFrame(Frame& frame, const SvfStatement& statement);
  std::optional<SvfShift> TakeScan(Column& column, const SvfStatement& statement);
  bool Idle(const Stay& stay, const SvfStatement& statement);
  void Reset(const SvfStatement& statement);
  void LeaveOut(const SvfStatement& statement, const std::string& why);
  void Refuse(const SvfToken& token, const std::string& why) { problems_.Error(token.place, why); }

  std::size_t most_;
  Problems& problems_;
  ScriptWriter script_{problems_};
  Column ir_;
  Column dr_;
  // The states of the last RUNTEST; they apply to the next one that names none.
  bool runs_in_reset_ = false;
  bool run_ends_in_reset_ = false;
  Stay idle_;  // since the last scan
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
  const SvfToken& keyword = statement.keyword;
  const Handler handler = HandlerOf(keyword);
  if (handler == nullptr) {
    return Refuse(keyword, fmt::format("SVF has no statement {}", Quoted(keyword)));
  }
  if (statement.is_long) {
    return Refuse(keyword, fmt::format("the statement has more than {} words", kMostWords));
  }
  (this->*handler)(statement);
  if (script_.Size() <= most_) return;
  Refuse(keyword, fmt::format("the script becomes larger than {} MiB; --size-limit lets more out",
                              most_ >> 20U));
}

// Returns the whole scan: its header, its own bits and its trailer.
std::optional<SvfShift> Importer::TakeScan(Column& column, const SvfStatement& statement) {
  const auto own = column.scan.Take(statement, problems_);
  if (!own.has_value()) return std::nullopt;
  if (own->tdi.empty()) {
    Refuse(statement.keyword, "a scan of 0 bits cannot be said in a script");
    return std::nullopt;
  }
  SvfShift whole = column.header.shift;
  whole.Append(*own);
  whole.Append(column.trailer.shift);
  idle_ = {};
  return whole;
}

void Importer::Sir(const SvfStatement& statement) {
  const auto shift = TakeScan(ir_, statement);
  if (shift.has_value()) script_.Ir(statement.keyword.place, *shift);
}

void Importer::Sdr(const SvfStatement& statement) {
  const auto shift = TakeScan(dr_, statement);
  if (shift.has_value()) script_.Dr(statement.keyword.place, *shift);
}

void Importer::TakeFrame(Frame& frame, const SvfStatement& statement) {
  auto shift = frame.remembered.Take(statement, problems_);
  if (shift.has_value()) frame.shift = std::move(*shift);
}

void Importer::EndState(const SvfStatement& statement) {
  if (statement.words.size() == 1 && IsSvfWord(statement.words[0], "IDLE")) {
    return LeaveOut(statement, "every scan of a script ends there");
  }
  Refuse(statement.keyword, "a script's scans end in Run-Test/Idle: IDLE is the one end state");
}

void Importer::Frequency(const SvfStatement& statement) {
  Words words(statement);
  if (words.AtEnd() || (words.TakeNumber().has_value() && words.Take("HZ") && words.AtEnd())) {
    return LeaveOut(statement, "the probe has its own");
  }
  Refuse(statement.keyword, "expected FREQUENCY, or FREQUENCY number HZ");
}

void Importer::RunTest(const SvfStatement& statement) {
  Words words(statement);
  const auto refuse = [&](const char* why) { Refuse(words.Next(), why); };
  if (words.Is("IRPAUSE") || words.Is("DRPAUSE")) return refuse(kRunTestStates);
  if (words.Take("IDLE")) runs_in_reset_ = run_ends_in_reset_ = false;
  if (words.Take("RESET")) runs_in_reset_ = run_ends_in_reset_ = true;
  Stay stay;
  if (const char* const why = TakeStay(words, stay); why != nullptr) return refuse(why);
  if (words.Take("ENDSTATE")) {
    run_ends_in_reset_ = words.Is("RESET");
    if (!words.Take("RESET") && !words.Take("IDLE")) return refuse(kRunTestStates);
  }
  if (!words.AtEnd()) return refuse(kRunTestForm);
  // Cycles in Test-Logic-Reset do nothing.
  if (runs_in_reset_) stay.cycles = 0;
  if (!Idle(stay, statement)) return;
  if (runs_in_reset_ || run_ends_in_reset_) return Reset(statement);
  LeaveOut(statement, "a moment in Run-Test/Idle");
}

// Adds up the time since the last scan. Returns false, and reports it, if it is too long.
bool Importer::Idle(const Stay& stay, const SvfStatement& statement) {
  idle_.cycles += stay.cycles;
  idle_.seconds += stay.seconds;
  const bool is_slow = idle_.cycles > kMostIdleCycles;
  if (!is_slow && idle_.seconds <= kMostIdleSeconds) return true;
  Refuse(statement.keyword,
         fmt::format("a script cannot wait, and {} may matter: left out are up to {} TCK cycles "
                     "and {} s between two scans",
                     is_slow ? fmt::format("{} TCK cycles", idle_.cycles)
                             : fmt::format("{} s", idle_.seconds),
                     kMostIdleCycles, kMostIdleSeconds));
  idle_ = {};
  return false;
}

void Importer::State(const SvfStatement& statement) {
  if (statement.words.empty()) return Refuse(statement.keyword, "STATE lacks its state");
  if (!Idle({static_cast<double>(statement.words.size()), 0}, statement)) return;
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
    script_.SetTrst(true);
    return Reset(statement);
  }
  if (!IsSvfWord(word, "OFF") && !IsSvfWord(word, "Z") && !IsSvfWord(word, "ABSENT")) {
    return Refuse(word, fmt::format("{} is none of ON, OFF, Z and ABSENT", Quoted(word)));
  }
  script_.SetTrst(false);
  LeaveOut(statement, "the probe holds it off");
}

void Importer::Pio(const SvfStatement& statement) {
  Refuse(statement.keyword, "a JTAG script has no other pins than those of the TAP");
}

void Importer::Reset(const SvfStatement& statement) {
  script_.Reset(statement.keyword.place);
  LeaveOut(statement,
           script_.HasScanned() ? "no scan follows" : "for the probe to do before the first scan");
}

void Importer::LeaveOut(const SvfStatement& statement, const std::string& why) {
  const SvfToken& keyword = statement.keyword;
  std::string name(keyword.text);
  for (char& ch : name) ch = icescript::UpperCase(ch);
  script_.Comment(fmt::format("line {}: {} left out: {}", keyword.place.line, name, why));
}

void Importer::End() {
  script_.End();
  if (!script_.HasScanned() && !problems_.HasErrors()) {
    problems_.Error({1, 1}, "the file scans nothing: it has no SIR and no SDR");
  }
}

}  // namespace

ImportedSvf ImportSvf(const std::string& name, std::string_view text, std::size_t most,
                      const Keeping& keeping) {
  ImportedSvf imported = {"", Problems(keeping)};
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
