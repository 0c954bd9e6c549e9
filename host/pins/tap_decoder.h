// Decodes the actions of a TAP from the steps of its pins.
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

// The most bits that are kept of a scan. Limits the memory for a scan that does not end.
constexpr std::size_t kMostScanBits = 1U << 20U;

// One pass through a column of the TAP's states, from Capture to Update, with or without Pause. If
// a client leaves in the middle, each client gets its own part of the scan.
struct TapScan {
  bool ir;                   // the IR column; otherwise the DR column
  Bits in;                   // TDI at each rising TCK edge in Shift, the first bit first
  Bits out;                  // TDO before each of these edges
  bool updated;              // false if a TAP reset or End cut it short
  StepRange steps;           // from the edge into Capture to the edge into Update, if it has them
  std::size_t left_out = 0;  // bits after the first kMostScanBits; they are not kept
  bool reset = false;        // a TAP reset cut it short
  bool continued = false;    // a call of End has cut off its beginning
};

class TapListener {
 public:
  virtual ~TapListener() = default;
  virtual void OnScan(const TapScan& scan) = 0;
  // The TAP enters Test-Logic-Reset, by TRST or by TMS, from another state or an unknown one.
  virtual void OnTapReset(bool by_trst, StepRange steps) = 0;
  // At `cycles` rising TCK edges, the TAP was in Run-Test/Idle and stayed there. Called when the
  // TAP leaves this state, or when a reset line changes.
  virtual void OnIdle(long cycles, StepRange steps) = 0;
  // NRST or TRST has changed. `levels` are the new levels of both (GPIO_PIN_ bits). Before the
  // first step they are high.
  virtual void OnResetPins(int levels, StepRange steps) = 0;
  // At a rising TCK edge with TRST high, the TAP goes from a known state, `before.tap`, to `to`,
  // which may be the same. Called before OnScan, OnTapReset and OnIdle of this edge.
  virtual void OnTapEdge(const PinStep& /*before*/, TapState /*to*/) {}
};

// Decodes the recorded steps. Reports actions in the order in which they end.
class TapDecoder : public StepRecorder {
 public:
  // The listeners must outlive the decoder.
  explicit TapDecoder(std::vector<TapListener*> listeners) : listeners_(std::move(listeners)) {}

  void Record(const PinStep& step) override;
  // Ends and reports the current scan or idle cycles. A continuation is reported separately.
  void End();
  // Returns the number of scans so far.
  std::size_t Scans() const { return scans_; }
  // Returns the step that was recorded last. Before the first one, all wires are high.
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
  std::size_t step_ = 0;  // the number of the step to be recorded
  PinStep last_{GPIO_PIN_ALL, std::nullopt, false};
  std::optional<TapScan> scan_;  // the current one
  long idle_cycles_ = 0;
  std::size_t idle_begin_ = 0;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PINS_TAP_DECODER_H_
