#include "host/round_log.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace icehost {
namespace {

// The maximum number of bytes kept for a round. Most rounds need only a few kilobytes.
constexpr std::size_t kMostKeptBytes = 64U << 20U;
// The maximum number of rounds written after the first. More could fill a disk overnight.
constexpr int kMostFailedRounds = 1000;
// The approximate memory, in bytes, for keeping a step and for keeping any other event.
constexpr std::size_t kStepBytes = 96;
constexpr std::size_t kEventBytes = 160;

// A copy of a call and of the scan that it points to. Pointers into the script's plan stay valid.
struct KeptCall {
  explicit KeptCall(const CallEvent& original) : call(original) {
    if (auto* const insert = std::get_if<InsertCall>(&call.call)) {
      scan = *insert->scan;
      insert->scan = &scan;
    } else if (auto* const execute = std::get_if<ExecuteCall>(&call.call)) {
      scan = *execute->scan;
      execute->scan = &scan;
    }
    if (scan.chain == nullptr) return;
    chain = *scan.chain;
    scan.chain = &chain;
  }
  KeptCall(const KeptCall&) = delete;
  KeptCall& operator=(const KeptCall&) = delete;

  std::size_t Bytes() const {
    std::size_t bytes = sizeof(KeptCall) + kEventBytes + scan.ir.in.size() + scan.dr.in.size() +
                        scan.ir.out.value_or("").size() + scan.dr.out.value_or("").size() +
                        chain.dr_in.size() + chain.dr_out.size();
    for (const Comparison& one : call.comparisons) {
      bytes += sizeof one + one.expected.size() + one.mask.size() + one.captured.size() +
               one.fault.size() + one.wrong_bits.size() * sizeof one.wrong_bits[0];
    }
    return bytes;
  }

  CallEvent call;
  Scan scan;
  ChainScan chain;
};

}  // namespace

void RoundLog::BeginRound(long round) {
  kept_.clear();
  dropped_steps_ += std::exchange(kept_steps_, 0);
  resumed_at_ = steps_;
  kept_bytes_ = 0;
  cut_ = false;
  open_ = round == 1;
  Frame([this, round] { Tell(&EventListener::OnRound, round); });
  round_ = round;
}

// Removes each event from the list before passing it on, so that a Rescue can pass on the rest.
std::vector<std::string> RoundLog::PassOn(RunTime now) {
  if (listeners_.empty() && recorders_.empty()) return {};
  if (!open_ && failed_rounds_ == kMostFailedRounds) return {};
  const bool last = !open_ && ++failed_rounds_ == kMostFailedRounds;
  open_ = true;
  if (cut_) {
    dropped_steps_ += kept_steps_;
    resumed_at_ = steps_;
  }
  kept_steps_ = 0;
  while (!kept_.empty()) {
    const Kept next = std::move(kept_.front());
    kept_.pop_front();
    next.pass();
  }
  std::vector<std::string> warnings;
  if (std::exchange(cut_, false)) {
    warnings.push_back(
        fmt::format("round {} is too long to keep in memory: the outputs omit its calls and steps "
                    "up to this point",
                    round_));
  }
  if (last) {
    warnings.push_back(fmt::format(
        "round {} failed; later rounds are not recorded, because too many rounds failed", round_));
  }
  for (const std::string& warning : warnings) {
    OnNotice({Severity::kWarning, warning, "", {}, {}, now});
  }
  return warnings;
}

template <class Pass>
void RoundLog::Frame(const Pass& pass) {
  if (open_) return pass();
  kept_.push_back({pass, false});
}

template <class Pass>
void RoundLog::Detail(std::size_t bytes, const Pass& pass) {
  if (open_) return pass();
  kept_bytes_ += bytes;
  if (!cut_ && kept_bytes_ > kMostKeptBytes) DropDetails();
  if (!cut_) kept_.push_back({pass, true});
}

void RoundLog::DropDetails() {
  cut_ = true;
  const auto frames = [](const Kept& one) { return one.detail; };
  kept_.erase(std::remove_if(kept_.begin(), kept_.end(), frames), kept_.end());
  kept_.shrink_to_fit();
}

StepRange RoundLog::Renumbered(const StepRange& steps) const {
  return {std::max(steps.begin, resumed_at_) - dropped_steps_,
          std::max(steps.end, resumed_at_) - dropped_steps_};
}

void RoundLog::OnScript(const ScriptBegin& script) {
  Frame([this, script] { Tell(&EventListener::OnScript, script); });
}

void RoundLog::OnResetRequest() {
  Frame([this] { Tell(&EventListener::OnResetRequest); });
}

void RoundLog::OnPlace(const ChainPlace& place) {
  Frame([this, place] { Tell(&EventListener::OnPlace, place); });
}

void RoundLog::OnCall(const CallEvent& call) {
  const auto kept = std::make_shared<KeptCall>(call);
  kept->call.steps = Renumbered(call.steps);
  Detail(kept->Bytes(), [this, kept] { Tell(&EventListener::OnCall, kept->call); });
}

void RoundLog::OnMessage(const char* text) {
  const std::string copy = text;
  Detail(kEventBytes + copy.size(),
         [this, copy] { Tell(&EventListener::OnMessage, copy.c_str()); });
}

void RoundLog::OnNotice(const Notice& notice) {
  Detail(kEventBytes + sizeof notice + notice.text.size() + notice.name.size(),
         [this, notice] { Tell(&EventListener::OnNotice, notice); });
}

void RoundLog::OnScriptEnd(const ScriptEnd& end) {
  Frame([this, end] { Tell(&EventListener::OnScriptEnd, end); });
}

// A waveform has no rounds, so the name of each operation includes its round.
void RoundLog::BeginOperation(const std::string& name, const CallSource& source) {
  Detail(kEventBytes + name.size(),
         [this, name = fmt::format("round {} {}", round_, name), source] {
           for (StepRecorder* const recorder : recorders_) recorder->BeginOperation(name, source);
         });
}

void RoundLog::Record(const PinStep& step) {
  ++steps_;
  if (!open_) ++kept_steps_;
  Detail(kStepBytes, [this, step] {
    for (StepRecorder* const recorder : recorders_) recorder->Record(step);
  });
}

}  // namespace icehost
