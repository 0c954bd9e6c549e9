#include "host/pins/recording_port.h"

#include <utility>

#include "host/target/wires.h"

namespace icehost {
namespace {

// The maximum number of pending writes. It limits the memory that is needed between two reads.
constexpr std::size_t kSettleAt = 1024;

}  // namespace

RecordingPort::RecordingPort(PinPort& port, std::vector<StepRecorder*> recorders)
    : port_(port), recorders_(std::move(recorders)) {}

void RecordingPort::Write(int levels, int enables) {
  if (pending_.size() == kSettleAt) Settle();
  port_.Write(levels, enables);
  port_.SampleTdo();
  const int wires = WireLevels(levels, enables);
  tap_.Update(wires);
  pending_.push_back({{wires, tap_.State(), (enables & GPIO_PIN_TDO) != 0},
                      std::exchange(next_, std::nullopt),
                      0});
  ++steps_;
}

int RecordingPort::Read() {
  Settle();
  return port_.Read();
}

void RecordingPort::SampleTdo() {
  if (pending_.empty()) {
    port_.SampleTdo();
    ++early_samples_;
  } else {
    ++pending_.back().user_samples;
  }
}

Bits RecordingPort::CollectTdo() {
  Settle();
  return std::exchange(samples_, {});
}

void RecordingPort::Flush() {
  Settle();
  port_.Flush();
}

void RecordingPort::Settle() {
  const Bits tdo = port_.CollectTdo();
  std::size_t at = std::exchange(early_samples_, 0);
  samples_.insert(samples_.end(), tdo.begin(), tdo.begin() + static_cast<std::ptrdiff_t>(at));
  for (const Pending& pending : pending_) {
    const bool level = tdo[at++];
    PinStep step = pending.step;
    step.wires = (step.wires & ~GPIO_PIN_TDO) | (level ? GPIO_PIN_TDO : 0);
    for (StepRecorder* const recorder : recorders_) {
      if (pending.begins.has_value()) {
        recorder->BeginOperation(pending.begins->name, pending.begins->source);
      }
      recorder->Record(step);
    }
    samples_.insert(samples_.end(), static_cast<std::size_t>(pending.user_samples), level);
  }
  pending_.clear();
}

}  // namespace icehost
