// Reads off the pins what happens to a TAP.
#ifndef ICESCRIPT_HOST_PINS_TAP_DECODER_H_
#define ICESCRIPT_HOST_PINS_TAP_DECODER_H_

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "entry/icescript.h"
#include "host/events/events.h"
#include "host/pins/recording_port.h"
#include "host/target/bits.h"
#include "host/target/tap.h"

namespace icehost {

// Limits the memory for a scan that does not end.
constexpr std::size_t kMostScanBits = 1U << 20U;

// One way through a column of the TAP's states, from Capture to Update, with or without Pause; or
// the part of it that one client played.
struct TapScan {
  bool ir;                   // the IR column, else the DR column
  Bits in;                   // TDI at each rising TCK edge in Shift, the first bit first
  Bits out;                  // TDO before each of these edges
  bool updated;              // false if a TAP reset, or the end, cut it short
  StepRange steps;           // from the edge that captures to the one that updates, if it has them
  std::size_t left_out = 0;  // bits after the first kMostScanBits, which are not kept
  bool reset = false;        // a TAP reset cut it short
  bool continued = false;    // End has cut off what was before
};

class TapListener {
 public:
  virtual ~TapListener() = default;
  virtual void OnScan(const TapScan& scan) = 0;
  // The TAP comes to Test-Logic-Reset from another state, or from an unknown one.
  virtual void OnTapReset(bool by_trst, StepRange steps) = 0;
  // The number of rising TCK edges that found the TAP in Run-Test/Idle and left it there. Called
  // once the TAP goes on or a reset line changes.
  virtual void OnIdle(long cycles, StepRange steps) = 0;
  // NRST or TRST changes. `levels`: both as they are now, GPIO_PIN_ bits; high before the first
  // step.
  virtual void OnResetPins(int levels, StepRange steps) = 0;
  // A rising TCK edge with TRST high takes the TAP from a known state, that of the step before, to
  // the next or leaves it there. Called before OnScan, OnTapReset and OnIdle of the same edge.
  virtual void OnTapEdge(const PinStep& /*before*/, TapState /*to*/) {}
};

// Reports everything in the order in which it ends.
class TapDecoder : public StepRecorder {
 public:
  // The listeners must outlive the decoder.
  explicit TapDecoder(std::vector<TapListener*> listeners) : listeners_(std::move(listeners)) {}

  void Record(const PinStep& step) override;
  // Reports what is under way. If steps follow, they are reported on their own.
  void End();
  // The number of scans so far.
  std::size_t Scans() const { return scans_; }
  // The step that was recorded last; before the first, all wires are high.
  const PinStep& Last() const { return last_; }

 private:
  template <class... Parameters, class... Arguments>
  void Tell(void (TapListener::*what)(Parameters...), const Arguments&... arguments) {
    for (TapListener* const listener : listeners_) (listener->*what)(arguments...);
  }
  void OnEdge(const PinStep& step);
  void BeginScan(TapState state, bool continued);
  void Shift(int wires);
  void OnResetPins(int levels);
  void ResetByTms();
  void CutScan();
  void EndScan(bool updated, std::size_t end);
  void EndIdle(std::size_t end);

  std::vector<TapListener*> listeners_;
  std::size_t scans_ = 0;
  std::size_t step_ = 0;  // the one that is recorded
  PinStep last_{GPIO_PIN_ALL, std::nullopt, false};
  std::optional<TapScan> scan_;  // under way
  long idle_cycles_ = 0;
  std::size_t idle_begin_ = 0;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PINS_TAP_DECODER_H_
