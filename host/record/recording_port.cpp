#include "host/record/recording_port.h"

#include <utility>

namespace icehost {
namespace {

// Bounds what is kept while nothing is read.
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
  pending_.push_back({{wires, tap_.State()}, 0});
  ++steps_;
}

int RecordingPort::Read() {
  Settle();
  return port_.Read();
}

void RecordingPort::SampleTdo() {
  if (pending_.empty()) {
    samples_.push_back((Read() & GPIO_PIN_TDO) != 0);
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
  for (std::size_t i = 0; i < pending_.size(); ++i) {
    PinStep step = pending_[i].step;
    step.wires = (step.wires & ~GPIO_PIN_TDO) | (tdo[i] ? GPIO_PIN_TDO : 0);
    for (StepRecorder* const recorder : recorders_) recorder->Record(step);
    samples_.insert(samples_.end(), static_cast<std::size_t>(pending_[i].user_samples), tdo[i]);
  }
  pending_.clear();
}

}  // namespace icehost
